#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the consumer against an installed Nearcast, and runs it.
# Usage: build.bash PREFIX cmake|pkg-config shared|static
# CXX says the compiler.
set -euo pipefail
prefix=$1 way=$2 kind=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT

with_cmake() {
    local target=Nearcast::nearcast
    [[ $kind == shared ]] || target=Nearcast::static
    cmake -S "$here" -B "$folder" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DNEARCAST_LIBRARY="$target" >"$folder/log" ||
        { cat "$folder/log" && exit 1; }
    cmake --build "$folder"
}

with_pkg_config() {
    local flags
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name nearcast.pc)")
    export PKG_CONFIG_PATH
    if [[ $kind == shared ]]; then
        flags=$(pkg-config --cflags --libs nearcast)
    else
        # A linker prefers the shared library where both are there.
        flags=$(pkg-config --static --cflags --libs nearcast | sed 's/-lnearcast/-l:libnearcast.a/')
    fi
    # shellcheck disable=SC2086  # the flags are words
    "${CXX:-c++}" -std=c++20 -Wall -Wextra -Werror "$here/main.cpp" -o "$folder/consumer" $flags
}

needs_shared() { objdump -p "$folder/consumer" | grep -q 'NEEDED.*libnearcast'; }

case $way in
    cmake) with_cmake ;;
    pkg-config) with_pkg_config ;;
esac
if [[ $kind == shared ]]; then
    needs_shared || { echo "the consumer does not use the shared library" && exit 1; }
else
    ! needs_shared || { echo "the consumer uses the shared library" && exit 1; }
fi
LD_LIBRARY_PATH=$(dirname "$(find "$prefix" -name libnearcast.so)") "$folder/consumer"
