#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# c_headers_test.sh C_COMPILER CXX_COMPILER INCLUDE_DIR
#
# Compiles the headers that C shares with C++ alone (twice in one unit, for the guard), and the
# layout of their records, as strictly as a careful host would: as C from C11 on, and the C
# interface as C++ too.
set -u
c_compiler=$1
cxx_compiler=$2
include_dir=$3
layout=$(dirname "$0")/record_layout.c
headers="nmos_instrument/node_state.h nmos_instrument/connection_state.h
    nmos_instrument/system_parameters.h nmos_instrument_c.h"
failures=0
units=0

for compiler in "$c_compiler" "$cxx_compiler"; do
    if ! command -v "$compiler" >/dev/null 2>&1; then
        echo "skipped: there is no compiler $compiler"
        exit 77
    fi
done

work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

# compile WHAT FILE COMPILER OPTION...
compile() {
    what=$1
    file=$2
    shift 2
    units=$((units + 1))
    if ! "$@" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$include_dir" \
        -fsyntax-only "$file"; then
        echo "FAILED: $what"
        failures=$((failures + 1))
    fi
}

for standard in c11 c17; do
    for header in $headers; do
        printf '#include "%s"\n' "$header" "$header" >"$work/header.c"
        compile "$header as $standard" "$work/header.c" \
            "$c_compiler" "-std=$standard" -Wstrict-prototypes
    done
    compile "record_layout.c as $standard" "$layout" "$c_compiler" "-std=$standard"
done
for standard in c++11 c++20; do
    printf '#include "%s"\n' nmos_instrument_c.h nmos_instrument_c.h >"$work/header.cpp"
    compile "nmos_instrument_c.h as $standard" "$work/header.cpp" \
        "$cxx_compiler" "-std=$standard" -Wold-style-cast
done

echo "$units units compiled by $c_compiler and $cxx_compiler, $failures failed"
[ "$units" -eq 12 ] && [ "$failures" -eq 0 ]
