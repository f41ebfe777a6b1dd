#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# c_pkg_config_test.sh PREFIX VERSION "C_COMPILER FLAGS..." "EMULATOR..."
#
# Moves the installed tree, builds the example in C with nothing but pkg-config, and runs it. The C
# library must find the text library beside it.
set -eu
prefix=$1
version=$2
compile=$3
emulator=$4
source=$(dirname "$0")/../../examples/record_from_c.c
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cp -R "$prefix" "$work/moved"
pc_dir=$(dirname "$(find "$work/moved" -name nmos-instrument-c.pc)")
export PKG_CONFIG_LIBDIR="$pc_dir"
pkg-config --print-errors --exists "nmos-instrument-c = $version"

# shellcheck disable=SC2046,SC2086 # flags are lists of words
$compile -std=c11 -Wall -Wextra -Wpedantic -Werror $(pkg-config --cflags nmos-instrument-c) \
    "$source" -o "$work/record_from_c" $(pkg-config --libs nmos-instrument-c) \
    -Wl,-rpath,"$(pkg-config --variable=libdir nmos-instrument-c)"
# shellcheck disable=SC2086
$emulator "$work/record_from_c" >"$work/output"
cat "$work/output"
grep -q '^{"api":.*"label":"Rack 4"' "$work/output"
grep -q '^\[{"caps":{"media_types":\["video/raw"]}' "$work/output"
