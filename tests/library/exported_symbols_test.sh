#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# exported_symbols_test.sh READELF LIBRARY LIST NODE [NEEDED]
#
# The library's dynamic symbols are its binary interface: exactly those of LIST (mangled name, then
# the name for people), the same on every CPU, each with the version NODE. None may be of the kind
# "unique", which would keep the library in memory after dlclose. Nothing but the C and C++ run-time
# libraries, and the library NEEDED, may be needed.
set -u
readelf=$1
library=$2
list=$3
node=$4
needed=${5-libc.so.6}
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failed=0

"$readelf" -W -d "$library" >"$work/dynamic" && "$readelf" -W --dyn-syms "$library" >"$work/all" ||
    exit 1

if grep -Eq 'lib(asan|tsan|ubsan)' "$work/dynamic"; then
    echo "skipped: a sanitizer is linked in, which adds symbols and libraries"
    exit 77
fi

# Columns: number, value, size, type, bind, visibility, section, name@@version. The version itself is
# an absolute symbol.
awk '$1 ~ /^[0-9]+:$/ && $5 != "LOCAL" && $7 != "UND" && $7 != "ABS" { print $8 }' "$work/all" |
    LC_ALL=C sort >"$work/exported"
sed -e '/^#/d' -e '/^$/d' -e 's/ .*//' -e "s/$/@@$node/" "$list" | LC_ALL=C sort >"$work/listed"
if ! diff -u "$work/listed" "$work/exported"; then
    echo "FAILED: lines with - are missing from the library, lines with + should not be there"
    failed=1
fi
if grep UNIQUE "$work/all"; then
    echo "FAILED: unique symbols stay in memory after dlclose"
    failed=1
fi
if sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' "$work/dynamic" |
    grep -Fvx "$needed" | grep -Ev '^(libstdc\+\+\.so\.6|libc\.so\.6|libm\.so\.6|libgcc_s\.so\.1|ld-linux.*)$'; then
    echo "FAILED: the library needs more than the C and C++ run-time libraries"
    failed=1
fi
echo "$(wc -l <"$work/exported") exported symbols"
exit $failed
