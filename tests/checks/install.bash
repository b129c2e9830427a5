#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs a build into an empty folder and moves it, so that what is used afterwards cannot know its own place.
# Usage: install.bash CMAKE BUILD PREFIX
set -euo pipefail
cmake=$1 build=$2 prefix=$3

rm -rf "$prefix" "$prefix.first"
"$cmake" --install "$build" --prefix "$prefix.first"
mv "$prefix.first" "$prefix"
if grep -rIl -e "$build" -e "$prefix" "$prefix"; then
    echo "the files above name the folders they were made in"
    exit 1
fi
for file in bin/nearcast share/man/man1/nearcast.1 share/bash-completion/completions/nearcast \
    share/licenses/nearcast/LICENSE include/nearcast/QXNearcastManager.h; do
    [[ -s $prefix/$file ]] || { echo "$file was not installed" && exit 1; }
done
if find "$prefix/include" -type f ! -path '*/include/nearcast/*.h' | grep .; then
    echo "the files above are no public headers"
    exit 1
fi
