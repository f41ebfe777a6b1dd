#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# The stripped shared library must not outgrow what an instrument has room for.
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
40) cpu=armhf limit=102400 ;;  # 100 KiB: the instruments' own CPU
62) cpu=x86-64 limit=122880 ;; # 120 KiB
3) cpu=i386 limit=147456 ;;
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
