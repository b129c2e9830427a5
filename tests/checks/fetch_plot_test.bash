#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# How ./dev fetches uPlot: once, from the npm that is there, and what it says where that fails.
# Usage: fetch_plot_test.bash SOURCE
set -euo pipefail
source=$1
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT

mkdir -p "$folder/bin" "$folder/web"
cp "$source/web/package-lock.json" "$folder/web/"
cat >"$folder/bin/npm" <<'END'
#!/bin/sh
echo "$PWD $*" >>../npm.log
[ ! -e ../offline ] || exit 1
mkdir -p node_modules/uplot/dist
cp package-lock.json node_modules/.package-lock.json
echo 'plot()' >node_modules/uplot/dist/uPlot.iife.min.js
END
chmod +x "$folder/bin/npm"

# dev FUNCTION: calls it as ./dev does. What it says goes to `said`.
dev() {
    (
        cd "$folder"
        PATH=$folder/bin:$PATH bash -euo pipefail -c '
            for part in "$1"/tools/dev/*.bash; do source "$part"; done
            install_packages() { echo "packages: $*"; return 1; }
            '"${2-}"'
            "$0"
            echo "went on"' "$1" "$source"
    ) >"$folder/said" 2>&1
}

fail() {
    printf '%s\n' "$1"
    cat "$folder/said"
    exit 1
}

touch "$folder/offline"
dev want_plot || fail "a build does not go on where uPlot cannot be fetched"
grep -q 'uPlot CANNOT BE FETCHED' "$folder/said" || fail "a build does not say that uPlot is missing"
grep -q 'went on' "$folder/said" || fail "a build ends where uPlot cannot be fetched"
! dev need_plot || fail "tests go on where uPlot cannot be fetched"
# Where there is no npm, Debian's is installed; that fails here too.
dev want_plot 'command() { [[ $* != "-v npm" ]] && builtin command "$@"; }' || fail "a build does not go on without npm"
grep -q 'packages: npm' "$folder/said" || fail "Debian's npm is not installed where there is none"

rm "$folder/offline" "$folder/npm.log"
dev need_plot || fail "uPlot is not fetched"
grep -q "^$folder/web ci --ignore-scripts" "$folder/npm.log" || fail "it is not fetched by npm ci without scripts"
! grep -q 'packages:' "$folder/said" || fail "Debian's npm is installed though there is one"
dev need_plot || fail "a second call fails"
dev want_plot || fail "a second call fails"
[[ $(wc -l <"$folder/npm.log") -eq 1 ]] || fail "what is there is fetched again"
sed -i 's/sha512-./sha512-?/' "$folder/web/package-lock.json"
dev need_plot || fail "another version is not fetched"
[[ $(wc -l <"$folder/npm.log") -eq 2 ]] || fail "another version is not fetched"
