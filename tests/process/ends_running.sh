#!/usr/bin/env bash
# ends_running.sh PROGRAM WORK DIRECTORY: fifty runs, each of which must end by itself with exit code 0.
set -euo pipefail

for run in $(seq 50); do
    timeout 20 "$1" "$2" "$3" || { echo "run $run: exit code $?" >&2 && exit 1; }
done
