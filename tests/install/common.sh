# Sourced by the tests of this folder. CXX and CMAKE_GENERATOR are the compiler and generator of the build.

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_dir=$(cd "$here/../.." && pwd)
cmake=${CMAKE:-cmake}
compiler=${CXX:-c++}

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# Runs a command, and prints its output only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || fail "$* failed:"$'\n'"$output"
}

# forbid_proj_headers WORK: sets without_proj to a flag with which a compiler fails as soon as it includes PROJ's
# headers.
forbid_proj_headers() {
    local message="a user of the library's headers needs no headers of PROJ"
    without_proj=-I$1/without_proj
    mkdir -p "$1/without_proj"
    printf '#error "%s"\n' "$message" >"$1/without_proj/proj.h"
    # An ineffective flag would let every consumer pass.
    { "$compiler" "$without_proj" -x c++ -fsyntax-only - <<<'#include <proj.h>' 2>&1 || true; } | grep -qF "$message" ||
        fail "proj.h is reachable"
}

# only_file NAME FOLDER: prints the only file of that name.
only_file() {
    local found
    found=$(find "$2" -name "$1")
    [ -n "$found" ] || fail "no $1 in $2"
    [ "$(wc -l <<<"$found")" = 1 ] || fail "more than one $1: $found"
    printf '%s\n' "$found"
}

library_folder() { dirname "$(dirname "$(only_file CoordinateTransformation.pc "$1")")"; }

is_shared() { [ -e "$(library_folder "$1")/libCoordinateTransformation.so" ]; }

needed_libraries() { readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }

# check_consumer PROGRAM PREFIX PROJ_DIRECTORY: the program is linked correctly and runs on the library of the prefix, with
# the given directory and with the installed one.
check_consumer() {
    local libraries installed
    libraries=$(needed_libraries "$1")
    if is_shared "$2"; then
        grep -q '^libCoordinateTransformation\.so\.1$' <<<"$libraries" || fail "not linked with the library: $libraries"
        ! grep -qE '^lib(proj|boost_)' <<<"$libraries" || fail "linked with what the library hides: $libraries"
    else
        ! grep -q '^libCoordinateTransformation' <<<"$libraries" || fail "linked with a shared library: $libraries"
    fi
    LD_LIBRARY_PATH=$(library_folder "$2") "$1" "$3" || fail "$1 does not meet the published point"
    installed=$(LD_LIBRARY_PATH=$(library_folder "$2") "$1") || fail "$1 fails with the installed PROJ directory"
    installed=${installed%%$'\n'*}
    ! is_shared "$2" || [ "$installed" -ef "$3" ] || fail "the installed PROJ directory is not $3 but $installed"
}

# check_headers PREFIX: exactly the public headers are installed.
check_headers() {
    diff <(cd "$source_dir/include" && find . -type f | sort) <(cd "$1/include" && find . -type f | sort) ||
        fail "the installed headers are not those of include/"
}

# check_links FOLDER: the targets of all links in its pages exist.
check_links() {
    local page target
    while IFS= read -r page; do
        while IFS= read -r target; do
            [ -e "$(dirname "$page")/$target" ] || fail "$page refers to $target, which is missing"
        done < <(grep -oE '\]\([^)#:]+' "$page" | sed 's/^](//')
    done < <(find "$1" -name '*.md')
}

# through_find_package PREFIX WORK and through_pkg_config PREFIX WORK: build and run the consumer.
through_find_package() {
    forbid_proj_headers "$2"
    quietly "$cmake" -S "$here/consumer" -B "$2" -DCMAKE_PREFIX_PATH="$1" -DCMAKE_CXX_FLAGS="'$without_proj' -Wall -Wextra" \
        -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    quietly "$cmake" --build "$2"
    case $(cat "$2/proj-directory") in "$1"/*) ;; *) fail "not the installation in $1" ;; esac
    check_consumer "$2/consumer" "$1" "$(cat "$2/proj-directory")"
}

through_pkg_config() {
    local flags=() proj_directory static=
    forbid_proj_headers "$2"
    PKG_CONFIG_PATH=$(library_folder "$1")/pkgconfig
    export PKG_CONFIG_PATH
    is_shared "$1" || static=--static
    pkg-config --exists --print-errors 'CoordinateTransformation >= 1' || fail "pkg-config refuses the package"
    # pkg-config quotes for the shell, for example blanks in a folder's name.
    eval "flags=($(pkg-config $static --cflags --libs CoordinateTransformation))"
    eval "proj_directory=$(pkg-config --variable=projdir CoordinateTransformation)"
    quietly "$compiler" -std=c++17 "$without_proj" "$here/consumer/main.cpp" -o "$2/consumer" "${flags[@]}"
    check_consumer "$2/consumer" "$1" "$proj_directory"
}

# A unity build, which an embedding project may choose, compiles fastest.
as_one_source=(-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0)

# configure_embedding BUILD add_subdirectory|FetchContent ON|OFF|unset: configures the project that contains the
# library's sources.
configure_embedding() {
    quietly "$cmake" -S "$here/embedding" -B "$1" -DEMBED_BY="$2" -DSHARED="$3" -DLIBRARY_SOURCE_DIR="$source_dir" \
        -DCMAKE_CXX_FLAGS="" -DFETCHCONTENT_FULLY_DISCONNECTED=ON "${as_one_source[@]}"
}
