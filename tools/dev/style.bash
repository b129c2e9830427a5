# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# What decides on style.

sources() {
    find include src apps tests examples fuzz bench -name '*.cpp' -o -name '*.h'
}

scripts() {
    echo dev
    echo .ci/run
    find tools tests packaging -name '*.bash'
}

check_format() {
    sources | xargs clang-format --dry-run -Werror
}

check_scripts() {
    scripts | xargs shellcheck
}

run_format() {
    need clang-format
    sources | xargs clang-format -i
}

run_tidy() {
    need_to_check
    want_plot
    run_stage "build" build asan
    run_stage "clang-tidy" tools/tidy.py build/asan "$@"
}
