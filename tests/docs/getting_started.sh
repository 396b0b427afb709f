#!/usr/bin/env bash
# getting_started.sh SOURCE BUILD: follows docs/getting-started.md block by block in an empty folder. The commands
# that build the library by a preset are taken as done, BUILD holding their result; that the preset exists is
# looked up. The packages are compared with those that ./check installs. Everything else runs as it stands.
set -euo pipefail
source=$1
build=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
blocks=$folder/blocks
mkdir "$blocks" "$folder/home"
export HOME=$folder/home

apt-get() {
    # shellcheck disable=SC2086
    diff <(. "$source/cmake/setup.sh" && printf '%s\n' install $BUILD_PACKAGES $TOOL_PACKAGES) <(printf '%s\n' "$@")
}

cmake() {
    case "$1 ${2:-}" in
    "--preset "*)
        local option
        for option in "${@:3}"; do grep -q "(${option:2:-4} " "$source/CMakeLists.txt" || return; done
        (cd "$source" && command cmake --list-presets) | grep -q "\"$2\""
        ;;
    "--build --preset") (cd "$source" && command cmake --build --list-presets) | grep -q "\"$3\"" ;;
    "--install build/release") command cmake --install "$build" "${@:3}" ;;
    *) command cmake "$@" ;;
    esac
}

awk -v blocks="$blocks" '
    /^```/ && file { close(file); file = ""; next }
    /^```/ { file = sprintf("%s/%02d.%s", blocks, ++n, substr($0, 4)); next }
    file { print > file }' "$source/docs/getting-started.md"

previous=
: >"$folder/promised"
: >"$folder/output"
cd "$source"
for block in "$blocks"/*; do
    case $block in
    *.sh)
        echo "== $(cat "$block")"
        # shellcheck disable=SC1090
        . "$block" >"$folder/output"
        ;;
    *.cmake) cp "$block" CMakeLists.txt ;;
    *.cpp) cp "$block" main.cpp ;;
    *.text)
        # What the program prints stands twice: below its source and below the command that runs it.
        if [ "${previous##*.}" = cpp ]; then cp "$block" "$folder/promised"; else diff "$block" "$folder/output"; fi
        ;;
    *)
        echo "nothing runs $block" >&2
        exit 1
        ;;
    esac
    previous=$block
done
[ -s "$folder/output" ]
diff "$folder/promised" "$folder/output"
