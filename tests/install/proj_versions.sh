#!/usr/bin/env bash
# proj_versions.sh WORK: the configuration fails with a PROJ that is too old or too new, and names both versions.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$1

# install_proj VERSION: installs the files of a PROJ that CMake reads. They compare versions as PROJ's own files do.
install_proj() {
    local folder=$work/$1/lib/cmake/proj
    mkdir -p "$folder"
    cat >"$folder/proj-config-version.cmake" <<END
set(PACKAGE_VERSION $1)
set(PACKAGE_VERSION_MAJOR ${1%%.*})
if(PACKAGE_FIND_VERSION VERSION_LESS_EQUAL PACKAGE_VERSION AND PACKAGE_FIND_VERSION_MAJOR EQUAL PACKAGE_VERSION_MAJOR)
  set(PACKAGE_VERSION_COMPATIBLE TRUE)
endif()
END
    echo 'message(FATAL_ERROR "this PROJ is taken")' >"$folder/proj-config.cmake"
}

# configure VERSION: prints CMake's output in one line; no other PROJ can be found.
configure() {
    install_proj "$1"
    { "$cmake" -S "$source_dir" -B "$work/build-$1" -DCMAKE_PREFIX_PATH="$work/$1" \
        -DCMAKE_PROJECT_CoordinateTransformation_INCLUDE="$work/alone.cmake" 2>&1 || true; } | tr -s '[:space:]' ' '
}

rm -rf "$work"
mkdir -p "$work"
printf 'set(CMAKE_FIND_USE_%s OFF)\n' CMAKE_SYSTEM_PATH SYSTEM_ENVIRONMENT_PATH >"$work/alone.cmake"
for version in 9.0.1 10.0.0; do
    message=$(configure $version)
    [[ $message == *'compatible with requested version range "9.1...<10"'*"version: $version "* ]] ||
        fail "PROJ $version is not refused: $message"
done
message=$(configure 9.1.0)
[[ $message == *"this PROJ is taken"* ]] || fail "PROJ 9.1.0 is not taken: $message"
