#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# host_exports_test.sh READELF LIBRARY NODE
#
# The host library exports what is in its own namespace and nothing of what it is made of, each with
# the version NODE.
set -u
readelf=$1
library=$2
node=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

if "$readelf" -W -d "$library" | grep -Eq 'lib(asan|tsan|ubsan)'; then
    echo "skipped: a sanitizer is linked in, which adds symbols"
    exit 77
fi

# Columns: number, value, size, type, bind, visibility, section, name@@version. The version itself is
# an absolute symbol.
"$readelf" -W --dyn-syms "$library" |
    awk '$1 ~ /^[0-9]+:$/ && $5 != "LOCAL" && $7 != "UND" && $7 != "ABS" { print $8 }' >"$work/exported"
if grep -Ev "^_ZN[KVR]*20nmos_instrument_host.*@@$node\$" "$work/exported"; then
    echo "FAILED: that is not of nmos_instrument_host, or has another version than $node"
    exit 1
fi
if grep Inside "$work/exported"; then
    echo "FAILED: that is the inside of a class"
    exit 1
fi
count=$(wc -l <"$work/exported")
echo "$count exported symbols"
[ "$count" -gt 0 ]
