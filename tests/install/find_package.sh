#!/usr/bin/env bash
# find_package.sh PREFIX WORK: builds and runs the consumer on the installation.
set -euo pipefail
. "$(dirname "$0")/common.sh"

rm -rf "$2"
through_find_package "$1" "$2"
