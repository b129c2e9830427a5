# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Measuring.

run_bench() {
    need_to_build dbus-daemon python3
    run_stage "build" build bench
    run_stage "the radio bluez" bench/bluez/bluez_bench.py build/bench "$@"
}
