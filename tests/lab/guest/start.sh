#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The guest's own start: a system bus as Debian has it, then the tests; at their end the machine goes off.
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8
mkdir -p /dev/pts /dev/shm /run/dbus
mount -t devpts devpts /dev/pts
mount -t tmpfs shm /dev/shm
ip link set lo up 2>/dev/null
cd /run || exit
/usr/bin/python3 -B "$1/guest/main.py" >/run/results/output 2>&1
echo "$?" >/run/results/status
sync
echo o >/proc/sysrq-trigger
sleep 60
