# libpng, libtiff and libjpeg-turbo for Windows: static libraries in build/libraries, cross-built from Debian's source
# packages. Sourced by environment.sh. It needs neither root nor a change of the system: apt gets package lists of its own
# for the sources of the archives that the system uses, and verifies signatures and checksums as always.

# Built anew when this file or the toolchain has changed.
libraries_stamp() { cat "$root/scripts/picture_libraries.sh" "$root/cmake/mingw-w64.cmake" | sha256sum; }

# private_apt FOLDER: lets apt-get and apt-cache of this shell keep all that they keep in the folder.
private_apt() {
    mkdir -p "$1"/{lists,cache,sources}
    # The lines "deb" of the system as lines "deb-src", in both of the formats that apt reads.
    find /etc/apt/sources.list /etc/apt/sources.list.d -name '*.list' -exec cat {} + 2>/dev/null |
        sed -n 's/^deb /deb-src /p' >"$1/sources/system.list"
    find /etc/apt/sources.list.d -name '*.sources' -exec sed -e '$s/$/\n/' -e 's/^Types:.*/Types: deb-src/' {} + \
        >"$1/sources/system.sources" 2>/dev/null
    # The system's settings, proxies above all, but not the commands that it runs after an update.
    apt-config dump | grep -v Invoke >"$1/apt.conf"
    cat >>"$1/apt.conf" <<-END
	Dir::Etc::Main "/dev/null";
	Dir::Etc::Parts "/dev/null";
	Dir::Etc::SourceList "/dev/null";
	Dir::Etc::SourceParts "$1/sources";
	Dir::State::Lists "$1/lists";
	Dir::Cache "$1/cache";
	Acquire::http::Timeout "20";
	Acquire::https::Timeout "20";
	Acquire::Languages "none";
	APT::Sandbox::User "";
	END
    export APT_CONFIG=$1/apt.conf
}

# fetch_source PACKAGE FOLDER: fetches the newest version whose files the archive has into the folder, and sets $fetched.
# Now and then the list names a version whose files aren't there.
fetch_source() {
    local version missing=''
    for version in $(apt-cache showsrc --only-source "$1" 2>>"$log" | sed -n 's/^Version: //p' | sort --version-sort --reverse --unique); do
        mkdir "$2"
        if (cd "$2" && apt-get source --only-source --download-only "$1=$version") >>"$log" 2>&1; then
            [ -z "$missing" ] || say "the archive lacks the files of $1 $missing; taking $version"
            fetched="$1 $version"
            return
        fi
        rm -r "$2"
        missing=$version
    done
    return 1
}

# unpack_source FOLDER: what has been fetched goes into FOLDER/tree, with Debian's patches.
unpack_source() (
    cd "$1" && cmake -E tar xf ./*.orig.tar.* && mv ./*/ tree && cd tree && cmake -E tar xf ../*.debian.tar.* || exit
    sed 's/ *#.*//; /^$/d' debian/patches/series | while read -r patch; do
        patch --strip=1 --input="debian/patches/$patch" || exit
    done
)

# build_library FOLDER OPTION...: builds and installs what stands in FOLDER/tree. libpng and libtiff include windows.h
# everywhere, which takes longer to read than most of their files to compile; its guard keeps it out. Full optimisation would
# nearly double the time.
build_library() {
    local folder=$1
    shift
    cmake -S "$folder/tree" -B "$folder/made" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" -DSTAIRMELT_LIBRARIES="$work/installed" \
        -DCMAKE_INSTALL_PREFIX="$work/installed" -DBUILD_SHARED_LIBS=OFF \
        -DZLIB_USE_STATIC_LIBS=ON -DCMAKE_C_FLAGS_RELEASE="-O1 -DNDEBUG -D_WINDOWS_ -ffile-prefix-map=$folder=." "$@" &&
        cmake --build "$folder/made" --target install
}

picture_libraries_are_built() { [ "$(cat "$root/build/libraries/stamp" 2>/dev/null)" = "$(libraries_stamp)" ]; }

build_picture_libraries() {
    local made=$root/build/libraries
    ! picture_libraries_are_built || return 0
    install_missing "${build_packages[@]}"
    say "building the picture libraries; this takes about a minute"
    mkdir -p "$root/build"
    # Elsewhere, since compilers' options and apt's settings are no place for a folder with a blank in its name.
    (
        set -e
        work=$(mktemp -d) log=$root/build/libraries.log
        trap 'rm -rf "$work"' EXIT
        private_apt "$work/apt"
        apt-get update >"$log" 2>&1 || true # some other archive of the system's may have no sources
        versions=
        for package in libpng1.6 libjpeg-turbo tiff; do
            if ! fetch_source "$package" "$work/$package"; then
                grep '^[EW]: Failed' "$log" | head -3 >&2
                say "the sources of $package can't be fetched from Debian's archive; try again when it can be reached"
                exit 1
            fi
            quietly "$work/unpack.log" unpack_source "$work/$package"
            versions+=$fetched$'\n'
            mkdir -p "$work/installed/licences"
            cp "$work/$package/tree/debian/copyright" "$work/installed/licences/$package"
        done
        quietly "$log" build_library "$work/libpng1.6" -DPNG_SHARED=OFF -DPNG_TESTS=OFF
        quietly "$log" build_library "$work/libjpeg-turbo" -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DWITH_SIMD=OFF
        # Without those of its compressions that need further libraries. One file does use windows.h.
        echo 'set_source_files_properties(tif_unix.c PROPERTIES COMPILE_OPTIONS -U_WINDOWS_)' \
            >>"$work/tiff/tree/libtiff/CMakeLists.txt"
        quietly "$log" build_library "$work/tiff" -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF \
            -Dcxx=OFF -Dwin32-io=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF -Dlzma=OFF -Dwebp=OFF -Dzstd=OFF
        # It does without JPEG, too, and says nothing.
        if ! grep --quiet 'define JPEG_SUPPORT 1' "$work/tiff/made/libtiff/tiffconf.h"; then
            say "libtiff has been built without JPEG, see $log"
            exit 1
        fi
        printf %s "$versions" >"$work/installed/versions"
        libraries_stamp >"$work/installed/stamp"
        rm -rf "$made" "$made.unfinished"
        mv "$work/installed" "$made.unfinished"
        mv "$made.unfinished" "$made"
    )
}
