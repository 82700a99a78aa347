#!/usr/bin/env bash
# Prints the licences of the libraries linked into the plug-in and runfilter, from the installed packages. Fails if one is
# missing.
set -eu
root=$(dirname "$(dirname "$(realpath "$0")")")

# notice NAME FILE
notice() { printf '\n\n======== %s ========\n\n' "$1" && cat "$2"; }

# of_package PACKAGE NAME: the notice for software from a Debian package.
of_package() { notice "$2 ($1 $(dpkg-query --show --showformat '${Version}' "$1"))" "/usr/share/doc/$1/copyright"; }

cat <<'END'
stairmelt.8bf and runfilter.exe contain parts of the software below. Its licences follow. Those of GCC's libraries are
the GNU General Public License with the GCC Runtime Library Exception, which lets programs of any licence contain them.
END
of_package g++-mingw-w64-x86-64-posix "GCC's libstdc++ and libgcc"
of_package mingw-w64-x86-64-dev "mingw-w64's runtime and winpthreads"
# The picture libraries are built from source, and their licences are stored with them.
[ -d "$root/build/libraries" ] || exit 0
of_package libz-mingw-w64-dev "zlib, in runfilter.exe"
for file in "$root"/build/libraries/licences/*; do
    notice "$(basename "$file"), in runfilter.exe" "$file"
done
