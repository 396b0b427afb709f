#!/usr/bin/env bash
# host_catalogue.sh ON|OFF WORK: builds and runs a host with its own message catalogue and the shared or static library,
# which then has no catalogue.
set -euo pipefail
. "$(dirname "$0")/common.sh"
shared=$1
work=$2

rm -rf "$work"
quietly "$cmake" -S "$here/host_catalogue" -B "$work" -DLIBRARY_SOURCE_DIR="$source_dir" -DCMAKE_CXX_FLAGS="" \
    -DBUILD_SHARED_LIBS="$shared" "${as_one_source[@]}"
quietly "$cmake" --build "$work"
library=$(find "$work/library" -name 'libCoordinateTransformation.so' -o -name 'libCoordinateTransformation.a')
symbols=$(nm -C "$library")
grep -q ' U msg::MessageHandler::object()' <<<"$symbols" || fail "the library does not ask the host"
! grep -E ' [TtVvWw] msg::' <<<"$symbols" || fail "the library has a catalogue of its own"
"$work/host" || fail "the library does not use the catalogue as it should: exit code $?"
quietly "$cmake" --install "$work" --prefix "$work/prefix"
