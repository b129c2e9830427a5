#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Which of a machine's sources of packages stand for the next release too.
set -euo pipefail
# shellcheck source=tests/lab/host/next_release.bash
source "$(dirname "${BASH_SOURCE[0]}")/next_release.bash"
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
mkdir "$folder"/{lists,written}

expect() {
    [[ $1 == "$2" ]] || { printf 'expected:\n%s\n--- got:\n%s\n' "$2" "$1" >&2 && exit 1; }
}

cat >"$folder/lists/debian.sources" <<'END'
Types: deb
URIs: http://one.example/bookworm
Suites: bookworm bookworm-updates
Components: main

Types: deb
URIs: http://two.example
Suites: somewhere-bookworm

Types: deb
URIs: http://three.example
Suites: bookworm-security
END
cat >"$folder/lists/others.list" <<'END'
# deb http://four.example bookworm main
deb [arch=amd64] http://five.example/debian bookworm-updates main
deb http://six.example stable-bookworm main
END

write_sources bookworm trixie "$folder/lists" "$folder/written"
expect "$(grep -h . "$folder"/written/*)" "Types: deb
URIs: http://one.example/bookworm
Suites: trixie trixie-updates
Components: main
Types: deb
URIs: http://three.example
Suites: trixie-security
deb [arch=amd64] http://five.example/debian trixie-updates main"

rm "$folder"/written/*
! write_sources sid trixie "$folder/lists" "$folder/written" 2>/dev/null || { echo "a machine without sources passes" >&2 && exit 1; }
expect "$(release_after bookworm)" trixie
! release_after potato 2>/dev/null || { echo "a release without a successor passes" >&2 && exit 1; }
