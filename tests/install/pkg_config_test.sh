#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# pkg_config_test.sh PREFIX VERSION "COMPILER FLAGS..." "EMULATOR..." PACKAGE CONSUMER STANDARD
#
# Moves the installed tree, builds the consumer with nothing but pkg-config, and runs it.
set -eu
prefix=$1
version=$2
compile=$3
emulator=$4
package=$5
source=$(dirname "$0")/$6
standard=$7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cp -R "$prefix" "$work/moved"
pc_dir=$(dirname "$(find "$work/moved" -name "$package.pc")")
# PKG_CONFIG_LIBDIR, not _PATH: a library that the system has must not step in.
export PKG_CONFIG_LIBDIR="$pc_dir"
pkg-config --print-errors --exists "$package = $version"

# shellcheck disable=SC2046,SC2086 # flags are lists of words
$compile "-std=$standard" $(pkg-config --cflags "$package") "$source" -o "$work/consumer" \
    $(pkg-config --libs "$package") \
    -Wl,-rpath,"$(pkg-config --variable=libdir "$package")"
# shellcheck disable=SC2086
$emulator "$work/consumer"
