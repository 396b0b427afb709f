#!/usr/bin/env bash
# install.sh BUILD PREFIX: installs, and compares the installation with what it should contain.
set -euo pipefail
. "$(dirname "$0")/common.sh"
build=$1
prefix=$2

rm -rf "$prefix"
quietly "$cmake" --install "$build" --prefix "$prefix"
check_headers "$prefix"

libraries=$(library_folder "$prefix")
library=$libraries/libCoordinateTransformation
if is_shared "$prefix"; then
    [ "$(readlink "$library.so")" = libCoordinateTransformation.so.1 ] || fail "no link for the linker"
    [ "$(readlink "$library.so.1")" = libCoordinateTransformation.so.1.0.0 ] || fail "no link of the SONAME"
    readelf -d "$library.so" | grep -q 'SONAME.*\[libCoordinateTransformation\.so\.1\]' || fail "no SONAME"
    [ ! -e "$library.a" ] || fail "a static library beside the shared one"
else
    [ -f "$library.a" ] || fail "no static library"
fi
[ -z "$(find "$libraries" -maxdepth 1 -name '*.a' ! -name libCoordinateTransformation.a)" ] || fail "an internal library"
for file in epsg epsg-axisorder.csv epsg-info.csv; do
    [ -s "$prefix/share/CoordinateTransformation/proj/$file" ] || fail "no $file"
done
documents=$prefix/share/doc/CoordinateTransformation
for file in README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md data/README.md docs/names.md; do
    cmp -s "$source_dir/$file" "$documents/$file" || fail "$file is not what is installed under its name"
done
check_links "$documents"
! grep -rl "$source_dir" "$libraries/cmake" "$libraries/pkgconfig" || fail "the packages name the source folder"
