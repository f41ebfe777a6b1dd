#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# The stripped shared library must not outgrow what an instrument has room for. Each limit is the
# measured size and a little more. A quarter of it is the JSON bodies: the writer is compiled into
# each of them, since they would take up to four times as long.
# Usage: library_size_test.sh STRIP LIBRARY BUILD_TYPE
set -eu
strip=$1
library=$2
build_type=$3

if [ "$build_type" != Release ]; then
    echo "skipped: only a release build is measured, this is $build_type"
    exit 77
fi

machine=$(od -An -tu2 -j18 -N2 "$library" | tr -d ' ')
case $machine in
40) cpu=armhf limit=114688 ;;  # 112 KiB: the instruments' own CPU
62) cpu=x86-64 limit=151552 ;; # 148 KiB
3) cpu=i386 limit=163840 ;;    # 160 KiB
*)
    echo "skipped: no limit is set for ELF machine $machine"
    exit 77
    ;;
esac

stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$strip" -o "$stripped" "$library"
size=$(wc -c <"$stripped")
echo "$cpu: $size bytes stripped, $limit are allowed"
[ "$size" -le "$limit" ]
