# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# The lab: Linux in QEMU with its real Bluetooth service (tests/lab).

need_for_lab() {
    need qemu-system-x86 cpio busybox-static kmod xz-utils util-linux dbus python3 python3-dbus libglib2.0-0 libasound2 libdw1 libudev1
}

# What it boots, in build/lab. Where Debian's packages are not to be had the tests of the lab are skipped.
# prepare_lab [today|next]
prepare_lab() {
    local system=${1:-today}
    tests/lab/host/prepare.bash "$(lab_cache "$system")" "$system" ||
        echo "*** THE LAB CANNOT BE SET UP HERE; ITS TESTS WILL BE SKIPPED ***" >&2
}

lab_cache() {
    if [[ $1 == today ]]; then echo build/lab; else echo "build/lab/$1"; fi
}

build_lab() {
    configure_in build/dev dev
    cmake --build build/dev --target lab
}

# boot_lab SYSTEM BOOT REGEX [OPTION...]
boot_lab() {
    local system=$1 boot=$2 programs=build/dev/tests/lab
    tests/lab/host/run.py --cache "$(lab_cache "$system")" --system "$system" --boot "$boot" \
        --controller $programs/lab_controller --listener $programs/lab_listener --proximity $programs/lab_proximity \
        --nearcast build/dev/apps/nearcast/nearcast "${@:4}" "$3"
}

# run_lab [--deaf] [--system today|next] [OPTION VALUE of run.py...] [REGEX]
run_lab() {
    if [[ ${1-} == --list ]]; then
        need python3
        tests/lab/host/run.py --list
        return
    fi
    local system=today boot=full regex="" options=()
    while [[ $# -gt 0 ]]; do
        case $1 in
            --deaf) boot=deaf ;;
            --system) system=${2-} && shift ;;
            --machines | --icount | --minutes | --seed) options+=("$1" "${2-}") && shift ;;
            -*) fail "lab has no option '$1'" ;;
            # A name that is tried for itself may be one of those that take long.
            *) regex=$1 && { [[ $boot == deaf ]] || boot=any; } ;;
        esac
        shift
    done
    [[ $system == today || $system == next ]] || fail "lab knows the systems 'today' and 'next', not '$system'"
    need_to_test
    need_for_lab
    run_stage "build" build_lab
    run_stage "set up the lab" prepare_lab "$system"
    run_stage "lab" boot_lab "$system" "$boot" "$regex" "${options[@]}"
}
