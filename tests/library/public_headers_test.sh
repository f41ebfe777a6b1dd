#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# public_headers_test.sh COMPILER INCLUDE_DIR
#
# Compiles every public header alone (twice in one unit, for its guard), then all of them in
# alphabetical order and in the reverse, as strictly as a careful host would: from C++11 on.
set -u
compiler=$1
include_dir=$2
failures=0
units=0

if ! command -v "$compiler" >/dev/null 2>&1; then
    echo "skipped: there is no compiler $compiler"
    exit 77
fi

# compile STANDARD NAME HEADER...: one unit that includes the headers in that order.
compile() {
    standard=$1
    name=$2
    shift 2
    units=$((units + 1))
    if ! printf '#include "%s"\n' "$@" | "$compiler" -x c++ "-std=$standard" \
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -I"$include_dir" -fsyntax-only -; then
        echo "FAILED: $name as $standard"
        failures=$((failures + 1))
    fi
}

headers=$(cd "$include_dir" && echo nmos_instrument/*.h)
backwards=
for header in $headers; do
    backwards="$header $backwards"
    compile c++11 "$header" "$header" "$header"
done
for standard in c++11 c++14 c++17 c++20; do
    # shellcheck disable=SC2086 # lists of words
    compile $standard "all headers" $headers
    # shellcheck disable=SC2086
    compile $standard "all headers, backwards" $backwards
done

echo "$units units compiled by $compiler, $failures failed"
[ "$units" -gt 10 ] && [ "$failures" -eq 0 ]
