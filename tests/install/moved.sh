#!/usr/bin/env bash
# moved.sh PREFIX WORK: a moved installation works in its new place.
set -euo pipefail
. "$(dirname "$0")/common.sh"
prefix=$1
work=$2

rm -rf "$work"
mkdir -p "$work"
cp -a "$prefix" "$work/elsewhere"
through_find_package "$work/elsewhere" "$work/find_package"
through_pkg_config "$work/elsewhere" "$work/pkg_config"

# A program with the static library finds the directory from its own place.
is_shared "$work/elsewhere" && exit 0
mkdir -p "$work/elsewhere/bin"
cp "$work/pkg_config/consumer" "$work/elsewhere/bin"
installed=$("$work/elsewhere/bin/consumer") || fail "the consumer fails with the installed PROJ directory"
[ "${installed%%$'\n'*}" = "$work/elsewhere/share/CoordinateTransformation/proj" ] || fail "not in the moved folder: $installed"
