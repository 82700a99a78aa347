# What ./smooth, ./check and ./package share: packages, Wine's surroundings and quiet commands. Sourced by bash, with $root set to the
# repository's directory and `set -eu` in force.

. "$root/scripts/picture_libraries.sh"

say() { echo "$(basename "$0"): $*" >&2; }

# Started through sudo in somebody's own clone, build and pictures should stay theirs: only the packages need root.
stay_with_owner() {
    if [ "$(id -u)" = 0 ] && [ -n "${SUDO_UID:-}" ] && [ "$SUDO_UID" != 0 ] &&
        [ "$(stat -c %u "$root")" = "$SUDO_UID" ]; then
        exec sudo --user "#$SUDO_UID" --set-home -- "$@"
    fi
}

# quietly LOG COMMAND...: the command's output goes to the log and is shown only when it fails.
quietly() {
    local log=$1
    shift
    "$@" >"$log" 2>&1 && return
    cat "$log" >&2
    return 1
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo --preserve-env=DEBIAN_FRONTEND "$@"; fi
}

# install_missing PACKAGE...: installs those of the packages that aren't there.
install_missing() {
    local missing=() package log
    for package in "$@"; do
        dpkg-query --show --showformat '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return
    if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
        say "packages are missing; run this as root and try again:"
        echo "apt-get update && apt-get --yes --no-install-recommends install ${missing[*]}" >&2
        return 1
    fi
    say "installing from Debian: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    log=$(mktemp)
    local install=(apt-get --yes --no-install-recommends install "${missing[@]}")
    # The lists of packages are missing or out of date on a fresh machine; elsewhere fetching them can be spared.
    if ! as_root "${install[@]}" >"$log" 2>&1; then
        say "fetching Debian's package lists"
        quietly "$log" as_root apt-get update || return 1
        quietly "$log" as_root "${install[@]}" || return 1
    fi
    rm -f "$log"
}

# What build_for_windows and the picture libraries need. A command that needs more installs all of it at once.
build_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix libz-mingw-w64-dev patch)
# What the picture files of a native build need.
native_libraries=(libpng-dev libtiff-dev libjpeg62-turbo-dev zlib1g-dev)

# The plug-in and runfilter, as far as they aren't up to date, in build/windows. Only runfilter needs the picture libraries, so
# the plug-in is built at the same time.
build_for_windows() {
    local tests=OFF build=$root/build/windows plugin=
    mkdir -p "$root/build"
    if ! picture_libraries_are_built; then
        build_without_libraries &
        plugin=$!
        build_picture_libraries
        wait $plugin
    fi
    if [ ! -e "$build/build.ninja" ] || ! grep --quiet STAIRMELT_TOOLS:.*=ON "$build/CMakeCache.txt"; then
        # GoogleTest is needed by ./check only.
        [ -d /usr/src/googletest ] && tests=ON
        configure_windows -DSTAIRMELT_TESTS=$tests
    fi
    build_targets stairmelt runfilter
}

build_without_libraries() {
    configure_windows -DSTAIRMELT_TOOLS=OFF
    (cd "$root" && quietly build/build.log cmake --build --preset windows --target stairmelt hostkit)
}

configure_windows() { (cd "$root" && quietly build/configure.log cmake --preset windows "$@"); }

# build_targets TARGET...: builds them for Windows. A terminal shows ninja's progress, a log one line before it.
build_targets() (
    cd "$root"
    local build=(cmake --build --preset windows --target "$@") plan steps
    plan=$("${build[@]}" -- -n)
    steps=$(grep -c '^\[' <<<"$plan") || exit 0 # nothing to do
    if [ -t 2 ]; then
        "${build[@]}" >&2
    else
        say "building: $steps steps, about $((steps * 2)) seconds on two cores"
        quietly build/build.log "${build[@]}"
    fi
)

# A prefix of the project's own (Wine refuses one that belongs to another user), without questions, pop-ups or chatter, and
# with file names in UTF-8 whatever the locale.
prepare_wine() {
    export WINEPREFIX=$root/build/wineprefix-$(id -u)
    export WINEDEBUG=-all
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
    export LC_ALL=C.UTF-8
    keep_heaps_at_rest
    if [ ! -e "$WINEPREFIX/system.reg" ]; then
        say "preparing Wine in $WINEPREFIX"
        mkdir -p "$WINEPREFIX"
        quietly "$root/build/wine.log" "${at_rest[@]}" wineboot --init </dev/null
        # Until it has written the prefix to disk, it isn't all there.
        wineserver --wait
    fi
    set_dialog_font
    keep_wine_running
}

# Dialogs are set in "MS Shell Dlg". On Windows that is Microsoft Sans Serif, whose dialog units are 6 by 13 pixels; in Wine
# it is Tahoma, or MS UI Gothic for Japanese, and where both are missing a wider font that cuts texts short. Wine's own MS
# Sans Serif has the units and the widths of Windows', but Debian's Wine doesn't look where its package puts it. The
# substitutes of "MS Shell Dlg" itself can't be changed: Wine writes them anew when the locale changes.
set_dialog_font() {
    local fonts=$WINEPREFIX/drive_c/windows/Fonts font=sserife.fon name
    [ ! -e "$fonts/$font" ] || return 0
    for name in Tahoma "MS UI Gothic"; do
        quietly "$root/build/wine.log" "${at_rest[@]}" wine reg add 'HKCU\Software\Wine\Fonts\Replacements' \
            /v "$name" /d "MS Sans Serif" /f </dev/null
    done
    # It has no kana. Wine takes them from fonts-noto-cjk where that is installed; elsewhere they are boxes.
    quietly "$root/build/wine.log" "${at_rest[@]}" wine reg add \
        'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' \
        /v "MS Sans Serif" /t REG_MULTI_SZ /d "NotoSansCJK-Regular.ttc,Noto Sans CJK JP" /f </dev/null
    cp "/usr/share/wine/fonts/$font" "$fonts"
    # It reads its fonts when its server starts.
    wineserver --kill || true
    wineserver --wait
}

# Sets $at_rest, to stand before a command that starts Windows programs. Debian's Wine is loaded below 2^31 and wants the
# page at 0x7FFE0000. Newer kernels move a program's heap up by a random part of a gigabyte; where it comes to lie on that
# page, once in some thousand starts, Wine ends with status 1 and not a word. So the heap is left at rest, if that is
# allowed: in some containers it isn't.
keep_heaps_at_rest() {
    at_rest=(setarch --addr-no-randomize)
    "${at_rest[@]}" true 2>/dev/null || at_rest=()
}

# Debian's Wine ends its server with the last program, and one that starts in that moment is turned away ("recvmsg:
# Connection reset by peer"). So the server is started here and told to wait some minutes for the next one; status 2 says
# that there is one already. Its services, which stay as long, are started by a program of no output of its own: they
# would keep a caller's pipes open.
keep_wine_running() {
    wineserver --persistent=300 </dev/null >/dev/null 2>&1 || [ $? = 2 ]
    quietly "$root/build/wine.log" "${at_rest[@]}" wine cmd /c exit </dev/null
}
