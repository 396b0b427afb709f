#!/usr/bin/env bash
# ends_running.sh RUNS PROGRAM WORK DIRECTORY: runs the program several times. Each run must end by itself with exit
# code 0.
set -euo pipefail

for run in $(seq "$1"); do
    timeout 20 "$2" "$3" "$4" || { echo "run $run: exit code $?" >&2 && exit 1; }
done
