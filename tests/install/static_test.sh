#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# static_test.sh CMAKE SOURCE COMPILER...
#
# Takes the first of the compilers that is installed. Builds the library as an archive, installs it, builds the consumer with the CMake package and with
# pkg-config, and runs it where there is no shared library. Nothing is optimised, so it takes seconds.
set -eu
cmake=$1
source=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for compiler; do
    if command -v "$compiler" >/dev/null 2>&1; then
        break
    fi
done
echo "compiled by $compiler"

"$cmake" -S "$source" -B "$work/library" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_COMPILER="$compiler" -DBUILD_SHARED_LIBS=OFF -DNMOS_INSTRUMENT_PROGRAM=OFF
"$cmake" --build "$work/library"
"$cmake" --install "$work/library" --prefix "$work/prefix"
if [ -n "$(find "$work/prefix" -name 'libnmos-instrument.so*')" ]; then
    echo "FAILED: a shared library is installed" >&2
    exit 1
fi

"$cmake" -S "$source/tests/install/find_package" -B "$work/consumer" -G Ninja \
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DEXPECTED_VERSION=
"$cmake" --build "$work/consumer"
"$work/consumer/consumer"

PKG_CONFIG_LIBDIR=$(dirname "$(find "$work/prefix" -name nmos-instrument.pc)")
export PKG_CONFIG_LIBDIR
# Linked by a compiler for C, which does not add the library of C++ by itself.
# shellcheck disable=SC2046 # flags are lists of words
"$compiler" -std=c++11 -c "$source/tests/install/consumer.cpp" \
    $(pkg-config --cflags nmos-instrument) -o "$work/consumer.o"
# shellcheck disable=SC2046
cc "$work/consumer.o" -o "$work/by_pkg_config" $(pkg-config --static --libs nmos-instrument)
"$work/by_pkg_config"
