#!/usr/bin/env bash
# static.sh WORK PREFIX: builds the static library alone and installs it.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$1
prefix=$2

options=(-DBUILD_SHARED_LIBS=OFF -DCOORDTRANS_GENERATE_PROJ_DIRECTORY=OFF)
for part in TESTS TOOLS EXAMPLES BENCHMARKS FUZZERS; do options+=("-DCOORDTRANS_BUILD_$part=OFF"); done
quietly "$cmake" -S "$source_dir" -B "$work" "${options[@]}"
quietly "$cmake" --build "$work"
"$here/install.sh" "$work" "$prefix"
