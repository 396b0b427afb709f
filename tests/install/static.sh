#!/usr/bin/env bash
# static.sh WORK PREFIX: builds the static library alone and installs it.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$1
prefix=$2

quietly "$cmake" -S "$source_dir" -B "$work" -DBUILD_SHARED_LIBS=OFF -DCOORDTRANS_BUILD_TOOLS=OFF \
    -DCMAKE_INSTALL_PREFIX="$prefix" "${as_one_source[@]}"
quietly "$cmake" --build "$work"
"$here/install.sh" "$work" "$prefix"
