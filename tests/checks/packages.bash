#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the Debian packages, unpacks them together, and builds the consumer on what came out.
# Usage: packages.bash CPACK BUILD SOURCE
set -euo pipefail
cpack=$1 build=$2 source=$3
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT

(cd "$build" && "$cpack" -G DEB -B "$folder" >"$folder/log") || { cat "$folder/log" && exit 1; }
packages=("$folder"/*.deb)
names=()
for package in "${packages[@]}"; do
    names+=("$(dpkg-deb --field "$package" Package)")
    dpkg-deb --extract "$package" "$folder/root"
done
if [[ "${names[*]}" != "libnearcast-dev libnearcast"[0-9]*" nearcast" ]]; then
    echo "these packages were made: ${names[*]}"
    exit 1
fi
for package in "${names[@]}"; do
    [[ -s $folder/root/usr/share/doc/$package/copyright ]] || { echo "$package has no copyright file" && exit 1; }
done
# The program holds uPlot, and says so, where it makes pages.
grep -q '^Copyright: 2022 Leon Sorokin$' "$folder/root/usr/share/doc/nearcast/copyright"
grep -q '^ Permission is hereby granted, free of charge' "$folder/root/usr/share/doc/nearcast/copyright"
"$folder/root/usr/bin/nearcast" --version
"$source/tests/consumer/build.bash" "$folder/root/usr" pkg-config shared
