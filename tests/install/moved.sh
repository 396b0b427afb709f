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
