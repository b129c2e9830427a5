# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# The lab: Linux in QEMU with its real Bluetooth service (tests/lab).

need_for_lab() {
    need qemu-system-x86 cpio busybox-static kmod dbus python3 python3-dbus libglib2.0-0 libasound2 libdw1 libudev1
}

# What it boots, in build/lab. Where Debian's packages are not to be had the tests of the lab are skipped.
prepare_lab() {
    tests/lab/host/prepare.bash build/lab ||
        echo "*** THE LAB CANNOT BE SET UP HERE; ITS TESTS WILL BE SKIPPED ***" >&2
}

build_lab() {
    configure_in build/dev dev
    cmake --build build/dev --target lab
}

# boot_lab BOOT REGEX [OPTION...]
boot_lab() {
    local boot=$1 programs=build/dev/tests/lab
    tests/lab/host/run.py --cache build/lab --boot "$boot" --controller $programs/lab_controller \
        --listener $programs/lab_listener --proximity $programs/lab_proximity \
        --nearcast build/dev/apps/nearcast/nearcast "${@:3}" "$2"
}

run_lab() {
    if [[ ${1-} == --list ]]; then
        need python3
        tests/lab/host/run.py --list
        return
    fi
    need_to_test
    need_for_lab
    run_stage "build" build_lab
    run_stage "set up the lab" prepare_lab
    local boot=full
    # A name that is tried for itself may be one of those that take long.
    [[ $# -eq 0 ]] || boot=any
    run_stage "lab" boot_lab "$boot" "${1-}"
}
