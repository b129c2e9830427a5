#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the lab boots, kept in a folder: Debian's kernel and Bluetooth service, neither of them installed here, and a
# first file system that finds the rest on this machine.
#
#   prepare.bash FOLDER [today|next]
#
# `today` is the Debian of this machine, `next` the release after it: its service comes with the libraries it needs.
set -euo pipefail
folder=$1
system=${2:-today}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/lab/host/next_release.bash
source "$here/next_release.bash"

# With those that each of them needs.
modules=(virtio_pci 9pnet_virtio 9p overlay bluetooth hci_vhci cmac ecb)
apt_options=(-q -o Acquire::Retries=3 -o APT::Sandbox::User=root)

# The packages that are unpacked, one a line.
packages() {
    local kernel
    kernel=$(apt-cache "${apt_options[@]}" depends --no-recommends --no-suggests linux-image-amd64 |
        sed -n 's/^ *Depends: \(linux-image-[0-9].*-amd64\)$/\1/p' | head -n 1)
    [[ -n $kernel ]] || { echo "lab: Debian's packages say nothing of linux-image-amd64 (apt-get update?)" >&2 && return 1; }
    printf '%s\n' "$kernel" bluez
    [[ $system == today ]] || libraries_of bluez
}

fetch() {
    local wanted package
    [[ $system == today ]] || prepare_next_release "$folder/apt"
    wanted=$(packages)
    rm -rf "$folder/root" "$folder/packages"
    mkdir -p "$folder/root/usr"/{bin,sbin,lib,lib64} "$folder/packages"
    # As an installed system has it; packages of either kind then lie in one place.
    for package in bin sbin lib lib64; do ln -s "usr/$package" "$folder/root/$package"; done
    # shellcheck disable=SC2086 # words
    (cd "$folder/packages" && apt-get "${apt_options[@]}" download $wanted)
    for package in "$folder/packages"/*.deb; do
        dpkg -x "$package" "$folder/root"
    done
    rm -r "$folder/packages"
    cp "$folder"/root/boot/vmlinuz-* "$folder/vmlinuz"
    touch "$folder/fetched"
}

# The files of the kernel's modules, each after those that it needs.
module_files() {
    local version module
    version=$(basename "$(echo "$folder"/root/lib/modules/*)")
    [[ -e $folder/root/lib/modules/$version/modules.dep ]] || /sbin/depmod -b "$folder/root" "$version"
    for module in "${modules[@]}"; do
        /sbin/modprobe -d "$folder/root" -S "$version" --show-depends "$module"
    done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }'
}

# The modules of newer kernels are compressed.
unpack_module() {
    case $1 in
        *.xz) xz -dc "$1" ;;
        *.zst) zstd -qdc "$1" ;;
        *) cat "$1" ;;
    esac
}

make_initrd() {
    local tree=$folder/initrd.tree file name
    rm -rf "$tree"
    mkdir -p "$tree"/{bin,modules,proc,sys,dev,host,results,scratch,root}
    cp "$(command -v busybox)" "$tree/bin/busybox"
    ln -s busybox "$tree/bin/sh"
    while read -r file; do
        name=$(basename "${file%%.ko*}")
        unpack_module "$file" >"$tree/modules/$name.ko"
        echo "$name" >>"$tree/modules/order"
    done < <(module_files)
    install -m 755 "$here/../guest/init" "$tree/init"
    (cd "$tree" && find . | cpio --quiet -o -H newc) >"$folder/initrd.new"
    rm -r "$tree"
    mv "$folder/initrd.new" "$folder/initrd"
}

mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
[[ -e $folder/fetched ]] || fetch
make_initrd
