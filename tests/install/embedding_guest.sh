#!/usr/bin/env bash
# embedding_guest.sh WORK: an embedded library is of the requested kind and changes nothing in its project.
set -euo pipefail
. "$(dirname "$0")/common.sh"
work=$1

# The library's own options and the variables that project() sets for it begin with its name.
OWN='^(COORDTRANS_[A-Z0-9_a-z]*|CoordinateTransformation_(SOURCE_DIR|BINARY_DIR|IS_TOP_LEVEL|LIB_DEPENDS))='

rm -rf "$work"
while read -r setting kind; do
    configure_embedding "$work/$setting" add_subdirectory "$setting"
    [ "$(cat "$work/$setting/kind.txt")" = "$kind" ] || fail "BUILD_SHARED_LIBS $setting: $(cat "$work/$setting/kind.txt")"
    changes=$(diff "$work/$setting/before.txt" "$work/$setting/after.txt" | sed -n 's/^[<>] //p' | grep -vE "$OWN" || true)
    [ -z "$changes" ] || fail "the library changes its project:"$'\n'"$changes"
done <<'END'
unset STATIC_LIBRARY
OFF STATIC_LIBRARY
ON SHARED_LIBRARY
END
