#!/usr/bin/env bash
# embed.sh add_subdirectory|FetchContent WORK: builds a project that holds the library's sources, runs its program and
# installs it.
set -euo pipefail
. "$(dirname "$0")/common.sh"
way=$1
work=$2

rm -rf "$work"
quietly "$cmake" -S "$here/embedding" -B "$work/build" -DEMBED_BY="$way" -DLIBRARY_SOURCE_DIR="$source_dir" \
    -DCMAKE_CXX_FLAGS="" -DFETCHCONTENT_FULLY_DISCONNECTED=ON
quietly "$cmake" --build "$work/build"
"$work/build/consumer" "$source_dir/data/proj" || fail "the consumer does not meet the published point"

quietly "$cmake" --install "$work/build" --prefix "$work/prefix"
installed=$(cd "$work/prefix" && find . -type f -o -type l)
[ "$installed" = ./bin/consumer ] || fail "more than the project's own was installed: $installed"
