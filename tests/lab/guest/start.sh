#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The guest's own start: the tests, and at their end the machine goes off.
#
#   start.sh LAB MACHINE
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8
mkdir -p /dev/pts /dev/shm /run/dbus
mount -t devpts devpts /dev/pts
mount -t tmpfs shm /dev/shm
ip link set lo up 2>/dev/null
# A module that the kernel wants and has not got would be looked for through 9p, by a process each time.
echo >/proc/sys/kernel/modprobe
cd /run || exit
mine=/run/results/machine$2
/usr/bin/python3 -B "$1/guest/main.py" "$mine" >"$mine/output" 2>&1
echo "$?" >"$mine/status"
sync
echo o >/proc/sysrq-trigger
while :; do :; done
