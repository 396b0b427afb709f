#!/usr/bin/env bash
# user_presets.sh WORK: what the pages show to type needs no package of a developer, prints no warning of CMake and turns no
# warning of a compiler into an error.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$1
absent=(--no-warn-unused-cli)
for package in GTest benchmark; do absent+=("-DCMAKE_DISABLE_FIND_PACKAGE_$package=ON"); done

rm -rf "$work"
mkdir -p "$work"
cd "$source_dir"
commands=$(grep -ho 'cmake --preset [^&]*' examples/locate/*.sh | sort -u)
[ -n "$commands" ] || fail "no page has a command"
while read -r command; do
    read -ra arguments <<<"$command"
    "$cmake" "${arguments[@]:1}" -B "$work/build" "${absent[@]}" >"$work/log" 2>"$work/warnings" ||
        fail "$command failed:"$'\n'"$(cat "$work/warnings")"
    [ ! -s "$work/warnings" ] || fail "$command warns:"$'\n'"$(cat "$work/warnings")"
    grep -q '"command".*errors/Exceptions\.cpp' "$work/build/compile_commands.json" || fail "no commands of the compiler"
    ! grep -q -e '-Werror' "$work/build/compile_commands.json" || fail "$command makes warnings errors"
done <<<"$commands"
