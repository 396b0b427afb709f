#!/usr/bin/env bash
# embed.sh add_subdirectory|FetchContent SHARED WORK: builds a project that contains the library's sources, runs its
# program and installs it.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$3

rm -rf "$work"
configure_embedding "$work/build" "$1" "$2"
quietly "$cmake" --build "$work/build"
"$work/build/consumer" "$source_dir/data/proj" || fail "the consumer does not meet the published point"

quietly "$cmake" --install "$work/build" --prefix "$work/prefix"
installed=$(cd "$work/prefix" && find . -type f -o -type l)
[ "$installed" = ./bin/consumer ] || fail "more than the project's own was installed: $installed"
