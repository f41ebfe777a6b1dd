#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# public_headers_test.sh COMPILER INCLUDE_DIR FOLDER "STANDARDS" [FORBIDDEN]
#
# Compiles every public header of FOLDER alone (twice in one unit, for its guard), then all of them in
# alphabetical order and in the reverse, as strictly as a careful host would: from the first standard
# on. None may include a file whose path matches FORBIDDEN, an extended regular expression.
set -u
compiler=$1
include_dir=$2
folder=$3
standards=$4
forbidden=${5-}
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

headers=$(cd "$include_dir" && echo "$folder"/*.h)
backwards=
first_standard=${standards%% *}
fewest_units=0
for header in $headers; do
    backwards="$header $backwards"
    compile "$first_standard" "$header" "$header" "$header"
    fewest_units=$((fewest_units + 1))
done
for standard in $standards; do
    # shellcheck disable=SC2086 # lists of words
    compile $standard "all headers" $headers
    # shellcheck disable=SC2086
    compile $standard "all headers, backwards" $backwards
done

echo "$units units compiled by $compiler, $failures failed"

if [ -n "$forbidden" ]; then
    # shellcheck disable=SC2086
    included=$(printf '#include "%s"\n' $headers |
        "$compiler" -x c++ "-std=$first_standard" -I"$include_dir" -M -) || exit 1
    if printf '%s\n' "$included" | tr ' ' '\n' | grep -E "$forbidden"; then
        echo "FAILED: the headers include what their users need not have"
        exit 1
    fi
    # What is not there cannot be seen to be missing.
    if ! printf '%s\n' "$included" | grep -q "$folder/"; then
        echo "FAILED: the compiler's list of included files is not understood"
        exit 1
    fi
fi
[ "$fewest_units" -gt 1 ] && [ "$units" -gt "$fewest_units" ] && [ "$failures" -eq 0 ]
