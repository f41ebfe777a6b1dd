#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# The licence and the documents are installed.
# Usage: documentation_test.sh DOCUMENTS
set -eu
cd "$1"

for file in LICENSE README.md CHANGELOG.md CONTRIBUTING.md docs/architecture.md docs/behaviour.md \
    docs/behaviour-network.md docs/tutorial.md examples/instrument.cpp docs/performance.md docs/performance.svg docs/examples/default.json; do
    if ! [ -s "$file" ]; then
        echo "$1/$file is missing" >&2
        exit 1
    fi
done
