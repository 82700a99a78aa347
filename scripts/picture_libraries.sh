# libpng, libtiff and libjpeg-turbo for Windows: static libraries in build/libraries, cross-built from Debian's source
# packages. Sourced by environment.sh. This needs no root and doesn't change the system: apt uses private package lists for
# the sources of the system's archives, and verifies signatures and checksums as usual.

# The libraries are rebuilt when this file or the toolchain changes.
libraries_stamp() { cat "$root/scripts/picture_libraries.sh" "$root/cmake/mingw-w64.cmake" | sha256sum; }

# private_apt FOLDER: makes apt-get and apt-cache in this shell store everything in the folder.
private_apt() {
    mkdir -p "$1"/{lists,cache,sources}
    # The system's "deb" entries as "deb-src" entries, in both formats that apt reads.
    find /etc/apt/sources.list /etc/apt/sources.list.d -name '*.list' -exec cat {} + 2>/dev/null |
        sed -n 's/^deb /deb-src /p' >"$1/sources/system.list"
    find /etc/apt/sources.list.d -name '*.sources' -exec sed -e '$s/$/\n/' -e 's/^Types:.*/Types: deb-src/' {} + \
        >"$1/sources/system.sources" 2>/dev/null
    # The system's settings, such as proxies, but not the commands that it runs after an update.
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

# fetch_source PACKAGE FOLDER: fetches the newest available version into the folder and sets $fetched. Occasionally the
# package list has a version whose files are missing in the archive.
fetch_source() {
    local version missing=''
    for version in $(apt-cache showsrc --only-source "$1" 2>>"$log" | sed -n 's/^Version: //p' | sort --version-sort --reverse --unique); do
        mkdir "$2"
        if (cd "$2" && apt-get source --only-source --download-only "$1=$version") >>"$log" 2>&1; then
            [ -z "$missing" ] || say "the archive lacks the files of $1 $missing; using $version"
            fetched="$1 $version"
            return
        fi
        rm -r "$2"
        missing=$version
    done
    return 1
}

# unpack_source FOLDER: unpacks the fetched source into FOLDER/tree and applies Debian's patches.
unpack_source() (
    cd "$1" && cmake -E tar xf ./*.orig.tar.* && mv ./*/ tree && cd tree && cmake -E tar xf ../*.debian.tar.* || exit
    sed 's/ *#.*//; /^$/d' debian/patches/series | while read -r patch; do
        patch --strip=1 --input="debian/patches/$patch" || exit
    done
)

# build_library FOLDER OPTION...: builds and installs the library in FOLDER/tree. libpng and libtiff include windows.h
# everywhere, and reading it takes longer than compiling most of their files. Defining its include guard keeps it out. Full
# optimisation would nearly double the time.
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
    # In a temporary folder, since compiler options and apt's settings can't handle a path with a blank.
    (
        set -e
        work=$(mktemp -d) log=$root/build/libraries.log
        trap 'rm -rf "$work"' EXIT
        private_apt "$work/apt"
        apt-get update >"$log" 2>&1 || true # another of the system's archives may have no sources
        versions=
        for package in libpng1.6 libjpeg-turbo tiff; do
            if ! fetch_source "$package" "$work/$package"; then
                grep '^[EW]: Failed' "$log" | head -3 >&2
                say "can't fetch the sources of $package from Debian's archive; check the connection and try again"
                exit 1
            fi
            quietly "$work/unpack.log" unpack_source "$work/$package"
            versions+=$fetched$'\n'
            mkdir -p "$work/installed/licences"
            cp "$work/$package/tree/debian/copyright" "$work/installed/licences/$package"
        done
        quietly "$log" build_library "$work/libpng1.6" -DPNG_SHARED=OFF -DPNG_TESTS=OFF
        quietly "$log" build_library "$work/libjpeg-turbo" -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF -DWITH_SIMD=OFF
        # Without the compressions that need further libraries. One file does use windows.h.
        echo 'set_source_files_properties(tif_unix.c PROPERTIES COMPILE_OPTIONS -U_WINDOWS_)' \
            >>"$work/tiff/tree/libtiff/CMakeLists.txt"
        quietly "$log" build_library "$work/tiff" -Dtiff-tools=OFF -Dtiff-tests=OFF -Dtiff-contrib=OFF -Dtiff-docs=OFF \
            -Dcxx=OFF -Dwin32-io=OFF -Djbig=OFF -Dlerc=OFF -Dlibdeflate=OFF -Dlzma=OFF -Dwebp=OFF -Dzstd=OFF
        # If libtiff doesn't find JPEG, it silently omits it.
        if ! grep --quiet 'define JPEG_SUPPORT 1' "$work/tiff/made/libtiff/tiffconf.h"; then
            say "libtiff was built without JPEG support; see $log"
            exit 1
        fi
        printf %s "$versions" >"$work/installed/versions"
        libraries_stamp >"$work/installed/stamp"
        rm -rf "$made" "$made.unfinished"
        mv "$work/installed" "$made.unfinished"
        mv "$made.unfinished" "$made"
    )
}
