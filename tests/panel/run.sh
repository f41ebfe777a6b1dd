#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Runs one file of the browser tests, or another script that needs the browser.
# Usage: run.sh BUILD_DIRECTORY [--test] FILE [ARGUMENT...]
#
# NMOS_INSTRUMENT names the program. The packages of npm are installed in BUILD_DIRECTORY when they are
# not there. Exit status: that of Node.js; 77 if something is missing, which is a failure (1) if
# NMOS_BROWSER_REQUIRED is set.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=$1
shift

missing() {
    echo "skipped: $*"
    [ -z "${NMOS_BROWSER_REQUIRED-}" ] || exit 1
    exit 77
}

# What npm says when it does not reach a registry.
unreachable='E50[0-9]|EAI_AGAIN|ECONN|EHOSTUNREACH|ENETUNREACH|ENOTFOUND|TIMEDOUT|SOCKET_TIMEOUT'

install_packages() {
    cmp -s "$here/package-lock.json" "$build/node_modules/.installed" && return
    cp "$here/package.json" "$here/package-lock.json" "$build"
    if ! (cd "$build" && npm ci --ignore-scripts --no-audit --no-fund --fetch-retries=1 \
        --fetch-retry-mintimeout=1000) >"$build/npm.log" 2>&1; then
        cat "$build/npm.log"
        grep -Eq "$unreachable" "$build/npm.log" && missing "npm reaches no registry"
        exit 1
    fi
    cp "$here/package-lock.json" "$build/node_modules/.installed"
}

command -v node >/dev/null || missing "there is no Node.js (node)"
[ "$(node -p 'parseInt(process.versions.node)')" -ge 18 ] ||
    missing "Node.js is $(node --version); it has to be 18 or later"
NMOS_CHROMIUM=${NMOS_CHROMIUM-$(command -v chromium || true)}
[ -n "$NMOS_CHROMIUM" ] || missing "there is no Chromium (chromium)"
export NMOS_CHROMIUM
if ! [ -d "$build/node_modules" ]; then
    command -v npm >/dev/null || missing "there is no npm"
fi
mkdir -p "$build"
# Several may start at once; the first installs for all.
exec 9>"$build/lock"
flock 9
install_packages
exec 9>&-

export NODE_PATH="$build/node_modules"
exec node "$@"
