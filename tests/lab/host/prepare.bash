#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the lab boots, kept in a folder: Debian's kernel and Bluetooth service, neither of them installed here, and a
# first file system that finds the rest on this machine.
#
#   prepare.bash FOLDER
set -euo pipefail
folder=$1
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# In this order: each needs those before it.
modules=(virtio_ring virtio virtio_pci_modern_dev virtio_pci_legacy_dev virtio_pci 9pnet 9pnet_virtio netfs fscache 9p
    overlay crc16 ecc rfkill ecdh_generic bluetooth hci_vhci cmac ecb)

fetch() {
    local kernel
    kernel=$(apt-cache depends --no-recommends --no-suggests linux-image-amd64 |
        sed -n 's/^ *Depends: \(linux-image-[0-9].*-amd64\)$/\1/p' | head -n 1)
    [[ -n $kernel ]] || { echo "lab: Debian's packages say nothing of linux-image-amd64 (apt-get update?)" >&2 && return 1; }
    rm -rf "$folder/root" "$folder/packages"
    mkdir -p "$folder/root" "$folder/packages"
    (cd "$folder/packages" && apt-get -q -o Acquire::Retries=3 -o APT::Sandbox::User=root download "$kernel" bluez)
    local package
    for package in "$folder/packages"/*.deb; do
        dpkg -x "$package" "$folder/root"
    done
    rm -r "$folder/packages"
    cp "$folder"/root/boot/vmlinuz-* "$folder/vmlinuz"
    touch "$folder/fetched"
}

make_initrd() {
    local tree=$folder/initrd.tree module
    rm -rf "$tree"
    mkdir -p "$tree"/{bin,modules,proc,sys,dev,host,results,scratch,root}
    cp "$(command -v busybox)" "$tree/bin/busybox"
    ln -s busybox "$tree/bin/sh"
    for module in "${modules[@]}"; do
        cp "$(find "$folder/root/lib/modules" -name "$module.ko" -print -quit)" "$tree/modules/"
        echo "$module" >>"$tree/modules/order"
    done
    install -m 755 "$here/../guest/init" "$tree/init"
    (cd "$tree" && find . | cpio --quiet -o -H newc) >"$folder/initrd.new"
    rm -r "$tree"
    mv "$folder/initrd.new" "$folder/initrd"
}

mkdir -p "$folder"
[[ -e $folder/fetched ]] || fetch
make_initrd
