#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# What an attacker must not find: an executable at a fixed address, addresses of functions that can
# still be overwritten while it runs, functions whose frame nothing guards.
# Usage: hardening_test.sh READELF PROGRAM LIBRARY...; PROGRAM may be "" where only libraries are built
set -u
readelf=$1
program=$2
library=$3
shift 2

if ! command -v "$readelf" >/dev/null; then
    echo "skipped: there is no readelf ('$readelf')"
    exit 77
fi
if "$readelf" -W -d "$library" | grep -Eq 'lib(asan|tsan|ubsan)'; then
    echo "skipped: a build with sanitizers is not shipped"
    exit 77
fi

failed=0

# expect FILE READELF_OPTION PATTERN WHAT
expect() {
    if ! "$readelf" -W "$2" "$1" | grep -Eq "$3"; then
        echo "FAILED: $1 has no $4"
        failed=1
    fi
}

for file in "$@" ${program:+"$program"}; do
    [ -n "$file" ] || continue # it is not built
    expect "$file" -h 'Type: +DYN' 'position-independent code'
    expect "$file" -l 'GNU_RELRO' 'segment that is locked after relocation (-z relro)'
    expect "$file" -d 'BIND_NOW|FLAGS_1.*NOW' 'binding at start (-z now)'
    expect "$file" -s '__stack_chk_fail' 'guard of its frames (-fstack-protector-strong)'
done
if [ -n "$program" ]; then
    expect "$program" -d 'FLAGS_1.*PIE' 'mark of a position-independent executable'
fi
exit $failed
