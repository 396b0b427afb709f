#!/usr/bin/env bash
# bare_system.sh SUITE [COMMAND...]: runs the commands, ./demo and ./check unless others are given, on a bare Debian system
# of that suite (bookworm, trixie) with the committed state of the repository, and prints how long each took. Run by hand,
# as root; needs debootstrap and git. The system is made in a folder of its own below TMPDIR and removed at the end.
#
# DEBIAN_MIRROR is the mirror of the packages.
set -euo pipefail

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

[ $# -ge 1 ] || fail "usage: bare_system.sh SUITE [COMMAND...]"
[ "$(id -u)" = 0 ] || fail "bare_system.sh must run as root: it makes a system and mounts its file systems"
for program in debootstrap git; do command -v "$program" >/dev/null || fail "bare_system.sh needs $program"; done
# The process has its own mounts, which end with it.
[ -n "${BARE_SYSTEM_HAS_OWN_MOUNTS:-}" ] || exec env BARE_SYSTEM_HAS_OWN_MOUNTS=yes unshare --mount -- "$0" "$@"

repository=$(cd "$(dirname "$0")/.." && pwd)
mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}
suite=$1
shift
commands=("$@")
[ $# -gt 0 ] || commands=(./demo ./check)
system=$(mktemp -d)
source=/root/CoordinateTransformation

clean_up() {
    local point
    for point in proc dev/pts dev/shm; do
        if mountpoint -q "$system/$point"; then umount "$system/$point" || umount --lazy "$system/$point"; fi
    done
    rm -rf --one-file-system "$system" "$system.log"
}
trap clean_up EXIT
trap 'exit 1' HUP INT TERM

repository_git() { git -C "$repository" -c safe.directory="$repository" "$@"; }

in_system() {
    chroot "$system" env -i HOME=/root LANG=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        ${http_proxy:+"http_proxy=$http_proxy"} sh -c "cd $source && $1"
}

make_system() {
    debootstrap --variant=minbase "$suite" "$system" "$mirror" >"$system.log" 2>&1 ||
        fail "debootstrap failed:"$'\n'"$(tail -n 20 "$system.log")"
    cp /etc/resolv.conf "$system/etc/resolv.conf"
    mkdir -p "$system/dev/pts" "$system/dev/shm"
    mount -t proc proc "$system/proc"
    mount -t devpts devpts "$system/dev/pts"
    mount -t tmpfs tmpfs "$system/dev/shm"
    # Cloned from a bundle, because root may not clone another user's folder.
    repository_git bundle create --quiet "$system/HEAD.bundle" HEAD
    git -c advice.detachedHead=false clone --quiet "$system/HEAD.bundle" "$system$source"
}

printf '== Making a bare %s\n' "$suite"
make_system
summary="Debian $(cat "$system/etc/debian_version"), $(nproc) cores, commit $(repository_git rev-parse --short HEAD):"
for command in "${commands[@]}"; do
    printf '== %s\n' "$command"
    start=$SECONDS
    in_system "$command" || fail "$command failed on a bare $suite"
    took=$((SECONDS - start))
    summary+=$'\n'"$command took $((took / 60)) min $((took % 60)) s"
done
printf '\n%s\n' "$summary"
