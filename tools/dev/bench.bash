# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Measuring.

run_bench() {
    need_to_build dbus-daemon python3
    run_stage "build" build bench
    run_stage "measure" tools/bench_table.py build/bench "$@"
}
