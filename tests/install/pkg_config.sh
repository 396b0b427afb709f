#!/usr/bin/env bash
# pkg_config.sh PREFIX WORK: builds and runs the consumer on the installation.
set -euo pipefail
. "$(dirname "$0")/common.sh"

rm -rf "$2"
through_pkg_config "$1" "$2"
