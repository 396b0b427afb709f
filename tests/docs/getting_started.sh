#!/usr/bin/env bash
# getting_started.sh SOURCE BUILD: follows the steps of docs/getting-started.md, which are those of examples/locate, in an
# empty folder. BUILD holds what the preset builds; whether there is such a preset is looked up. The packages are compared
# with those that ./check installs. Everything else runs as it is written.
set -euo pipefail
source=$1
build=$2
steps=$source/examples/locate
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/home" "$folder/locate"
export HOME=$folder/home

apt-get() {
    # shellcheck disable=SC2086
    diff <(. "$source/cmake/setup.sh" && printf '%s\n' install $BUILD_PACKAGES $TOOL_PACKAGES) <(printf '%s\n' "$@")
}

cmake() {
    case "$1 ${2:-}" in
    "--preset "*) (cd "$source" && command cmake --list-presets) | grep -q "\"$2\"" ;;
    "--build --preset") (cd "$source" && command cmake --build --list-presets) | grep -q "\"$3\"" ;;
    "--install build/release") command cmake --install "$build" "${@:3}" ;;
    *) command cmake "$@" ;;
    esac
}

# follow STEP: what it prints last is kept.
follow() {
    echo "== $(cat "$steps/$1.sh")"
    # shellcheck disable=SC1090
    . "$steps/$1.sh" >"$folder/output"
}

cd "$source"
follow packages
follow install
cp "$steps/CMakeLists.txt" "$steps/main.cpp" "$folder/locate"
cd "$folder/locate"
follow build
diff "$steps.txt" <(tail -n 1 "$folder/output")
