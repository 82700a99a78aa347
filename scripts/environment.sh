# Functions for ./smooth, ./check and the other commands: installing packages, building, preparing Wine. Sourced by bash,
# with $root set to the repository's directory and `set -eu` in force.

. "$root/scripts/picture_libraries.sh"

say() { echo "$(basename "$0"): $*" >&2; }

# With sudo in a user's own clone, runs the command as that user again, so that the files belong to the user. Only
# installing packages needs root.
stay_with_owner() {
    if [ "$(id -u)" = 0 ] && [ -n "${SUDO_UID:-}" ] && [ "$SUDO_UID" != 0 ] &&
        [ "$(stat -c %u "$root")" = "$SUDO_UID" ]; then
        exec sudo --user "#$SUDO_UID" --set-home -- "$@"
    fi
}

# quietly LOG COMMAND...: writes the command's output to the log and shows it only if the command fails.
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

# install_missing PACKAGE...: installs the packages that aren't installed yet.
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
    # Package lists are fetched only if they are needed: on a fresh machine they are missing or out of date.
    if ! as_root "${install[@]}" >"$log" 2>&1; then
        say "fetching Debian's package lists"
        quietly "$log" as_root apt-get update || return 1
        quietly "$log" as_root "${install[@]}" || return 1
    fi
    rm -f "$log"
}

# For build_for_windows and the picture libraries. Commands that need more install everything at once.
build_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix libz-mingw-w64-dev patch)
# For the picture formats of a native build.
native_libraries=(libpng-dev libtiff-dev libjpeg62-turbo-dev zlib1g-dev)

# Brings the plug-in and runfilter in build/windows up to date. Only runfilter needs the picture libraries, so the plug-in is
# built while they are.
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
        # Only ./check installs GoogleTest.
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

# build_targets TARGET...: builds them for Windows. A terminal shows ninja's progress; a log gets a single line.
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

# Sets up a Wine prefix for this project and user (Wine refuses another user's), without dialogs and debug messages, and
# with file names in UTF-8 in any locale.
prepare_wine() {
    export WINEPREFIX=$root/build/wineprefix-$(id -u)
    export WINEDEBUG=-all
    export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
    export LC_ALL=C.UTF-8
    set_fixed_layout
    if [ ! -e "$WINEPREFIX/system.reg" ]; then
        say "preparing Wine in $WINEPREFIX"
        mkdir -p "$WINEPREFIX"
        quietly "$root/build/wine.log" "${fixed_layout[@]}" wineboot --init </dev/null
        # The prefix is complete once the server has written it to disk.
        wineserver --wait
    fi
    set_dialog_font
    keep_wine_running
}

# The dialogs' font is "MS Shell Dlg". On Windows this is Microsoft Sans Serif, whose dialog units are 6 by 13 pixels. In
# Wine it is Tahoma, or MS UI Gothic for Japanese, and without these a wider font, which truncates texts. Wine's own MS
# Sans Serif has the same units and widths as on Windows, but Debian's Wine doesn't look in the folder where its package
# installs it. The substitutes of "MS Shell Dlg" itself can't be changed: Wine resets them when the locale changes.
set_dialog_font() {
    local fonts=$WINEPREFIX/drive_c/windows/Fonts font=sserife.fon name
    [ ! -e "$fonts/$font" ] || return 0
    for name in Tahoma "MS UI Gothic"; do
        quietly "$root/build/wine.log" "${fixed_layout[@]}" wine reg add 'HKCU\Software\Wine\Fonts\Replacements' \
            /v "$name" /d "MS Sans Serif" /f </dev/null
    done
    # It has no kana. Wine takes them from fonts-noto-cjk, and shows boxes if that isn't installed.
    quietly "$root/build/wine.log" "${fixed_layout[@]}" wine reg add \
        'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' \
        /v "MS Sans Serif" /t REG_MULTI_SZ /d "NotoSansCJK-Regular.ttc,Noto Sans CJK JP" /f </dev/null
    cp "/usr/share/wine/fonts/$font" "$fonts"
    # Wine reads its fonts when its server starts.
    wineserver --kill || true
    wineserver --wait
}

# Sets $fixed_layout, a prefix for commands that start Windows programs. Debian's Wine is loaded below 2^31 and needs the page
# at 0x7FFE0000. Newer kernels move a program's heap up by a random part of a gigabyte. About once in a few thousand starts
# the heap covers that page, and Wine exits with status 1 and no message. The prefix turns the randomness off where that is
# allowed, which it isn't in some containers.
set_fixed_layout() {
    fixed_layout=(setarch --addr-no-randomize)
    "${fixed_layout[@]}" true 2>/dev/null || fixed_layout=()
}

# Debian's Wine stops its server after the last program, and a program that starts at that moment fails ("recvmsg:
# Connection reset by peer"). So the server is started here and waits five minutes for the next program; status 2 means
# that one is running already. Wine's services live as long and would keep a caller's pipes open, so they are started here
# by a program without output.
keep_wine_running() {
    wineserver --persistent=300 </dev/null >/dev/null 2>&1 || [ $? = 2 ]
    quietly "$root/build/wine.log" "${fixed_layout[@]}" wine cmd /c exit </dev/null
}
