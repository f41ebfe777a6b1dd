#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# exported_symbols_test.sh READELF LIBRARY LIST
#
# The dynamic symbols of the C library are its binary interface: exactly those of LIST, all of the
# version NMOS_INSTRUMENT_C_1.
set -u
readelf=$1
library=$2
list=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

"$readelf" -W -d "$library" >"$work/dynamic" && "$readelf" -W --dyn-syms "$library" >"$work/all" ||
    exit 1
if grep -Eq 'lib(asan|tsan|ubsan)' "$work/dynamic"; then
    echo "skipped: a sanitizer is linked in, which adds symbols"
    exit 77
fi

# The version itself is a symbol too, of section ABS.
awk '$1 ~ /^[0-9]+:$/ && $5 != "LOCAL" && $7 != "UND" && $7 != "ABS" { print $8 }' "$work/all" |
    LC_ALL=C sort >"$work/exported"
sed -e '/^#/d' -e 's/$/@@NMOS_INSTRUMENT_C_1/' "$list" | LC_ALL=C sort >"$work/listed"
echo "$(wc -l <"$work/exported") exported symbols"
if ! diff -u "$work/listed" "$work/exported"; then
    echo "FAILED: lines with - are missing from the library, lines with + should not be there"
    exit 1
fi
