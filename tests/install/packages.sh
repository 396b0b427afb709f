#!/usr/bin/env bash
# packages.sh BUILD [WORK]: makes the Debian packages for /usr, checks them with lintian and by their contents, unpacks
# them into an empty root and builds and runs the consumer there.
set -euo pipefail
. "$(dirname "$0")/common.sh"
build=$(cd "$1" && pwd)
work=${2:-$build/package-test}

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }
package_file() { only_file "$1_*.deb" "$work/packages"; }
field() { dpkg-deb -f "$(package_file "$1")" "$2"; }

# require_dependency PACKAGE PATTERN: one of its dependencies matches the pattern as a whole.
require_dependency() {
    field "$1" Depends | sed 's/, */\n/g' | grep -qxE "$2" || fail "$1 does not depend on $2: $(field "$1" Depends)"
}

# require_contents PACKAGE PATTERN: all its files match the pattern.
require_contents() {
    local held
    held=$(dpkg-deb -c "$(package_file "$1")" | awk '!/^d/ { print $6 }' | grep -vE "$2" || true)
    [ -z "$held" ] || fail "$1 holds what does not belong there: $held"
}

# require_copyright PACKAGE: it has the terms of the library and of the data in Debian's place.
require_copyright() {
    local text section
    text=$(dpkg-deb --fsys-tarfile "$(package_file "$1")" | tar -xO --wildcards "*/share/doc/$1/copyright") ||
        fail "$1 has no copyright file"
    [ "$(head -n 1 <<<"$text")" = "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/" ] ||
        fail "the copyright file of $1 is not in Debian's format"
    for section in '*' 'share/CoordinateTransformation/proj/*'; do
        grep -qxF "Files: $section" <<<"$text" || fail "the copyright file of $1 has no section for $section"
    done
    grep -q 'IOGP' <<<"$text" || fail "the copyright file of $1 does not name the owner of the EPSG dataset"
}

rm -rf "$work"
mkdir -p "$work/root"
cpack=$(dirname "$(command -v "$cmake")")/cpack
(cd "$work" && quietly "$cpack" --config "$build/CPackConfig.cmake" -B "$work/packages" \
    -D CPACK_PACKAGING_INSTALL_PREFIX=/usr)
rm -rf "$work/packages/_CPack_Packages"

library=libcoordinatetransformation1
development=libcoordinatetransformation-dev
data=coordinatetransformation-data
documentation=coordinatetransformation-doc
tools=coordinatetransformation-tools
version=$(field $library Version)
expected=("$library" "$data" "$development" "$documentation")
with_tools=$(cached COORDTRANS_BUILD_TOOLS)
[ "$with_tools" != ON ] || expected+=("$tools")
[ "$(find "$work/packages" -maxdepth 1 -name '*.deb' | wc -l)" = "${#expected[@]}" ] || fail "not ${expected[*]}"

# lintian exists only on Debian and its derivatives. A build that is not configured for /usr installs to lib instead of the
# folder of the architecture.
if command -v lintian >/dev/null; then
    lintian=(lintian --allow-root --fail-on error,warning)
    [ "$(cached CMAKE_INSTALL_PREFIX)" = /usr ] || lintian+=(--suppress-tags pkg-config-unavailable-for-cross-compilation)
    quietly "${lintian[@]}" "$work"/packages/*.deb
fi

require_dependency $library 'libproj[0-9]+ .*'
require_dependency $library 'libboost-filesystem[0-9.]+ .*'
require_dependency $library 'libstdc\+\+6 .*'
require_dependency $library 'libc6 .*'
require_dependency $development "$library \\(= $version\\)"
require_dependency $development "$data \\(= $version\\)"
require_dependency $development 'libboost-dev .*'
copyright='|/share/doc/[^/]+/(copyright|changelog(\.Debian)?\.gz)$'
require_contents $library '/lib/([^/]+/)?libCoordinateTransformation\.so\.1(\.0\.0)?$'"$copyright"
require_contents $data '/share/CoordinateTransformation/proj/epsg(-axisorder\.csv|-info\.csv)?$'"$copyright"
require_contents $development '/include/|/libCoordinateTransformation\.so$|/cmake/CoordinateTransformation/|/pkgconfig/'"$copyright"
require_contents $documentation '/share/doc/.*\.md$'"$copyright"
for package in "${expected[@]}"; do require_copyright "$package"; done
for package in $data $documentation; do
    [ "$(field $package Architecture)" = all ] || fail "$package is made for one architecture"
done
dpkg-deb -I "$(package_file $library)" shlibs |
    grep -qE "^libCoordinateTransformation 1 $library" || fail "no shlibs entry"

for package in "${expected[@]}"; do dpkg-deb -x "$(package_file "$package")" "$work/root"; done
prefix=$work/root/usr
check_headers "$prefix"
through_find_package "$prefix" "$work/find_package"
through_pkg_config "$prefix" "$work/pkg_config"

[ "$with_tools" = ON ] || exit 0
require_dependency $tools "$library \\(= $version\\)"
require_dependency $tools 'libproj[0-9]+ .*'
require_dependency $tools "$data \\(= $version\\)"
require_contents $tools '/bin/crs(ctl|-projdir)$|/share/man/man1/crs.*\.1\.gz$|/(completions|vendor-completions|vendor_completions\.d)/_?crs(ctl|-projdir)(\.fish)?$|/copyright\.[^/]*-dev$'"$copyright"
LD_LIBRARY_PATH=$(library_folder "$prefix")
export LD_LIBRARY_PATH
for program in crsctl crs-projdir; do
    [ -x "$prefix/bin/$program" ] || fail "no $program"
    quietly "$prefix/bin/$program" --version
done
gzip -t "$prefix/share/man/man1/crsctl.1.gz" || fail "no manual page"
