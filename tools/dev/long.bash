# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# What takes too long for every change: five parts, each of them under an hour on two cores.

long_parts=(fuzz coverage mutants lab soak)

# run_test_long [PART [OPTION...]]: all parts where none is named.
run_test_long() {
    if [[ $# -eq 0 ]]; then
        local part
        for part in "${long_parts[@]}"; do
            "long_$part"
        done
    else
        local wanted=$1
        shift
        declare -F "long_$wanted" >/dev/null || fail "test-long has no part '$wanted'; it has: ${long_parts[*]}"
        "long_$wanted" "$@"
    fi
    tell_stages
}

# long_fuzz [SECONDS]: of each fuzzer.
long_fuzz() {
    run_fuzz "$@"
}

# Neither the pages nor what is looked at from outside tells anything about src/.
not_covered='^(checks[.]|lab[.]|web[.]|examples[.]|instructions$|check_instructions)'

run_covered_tests() {
    local profiles=$PWD/build/coverage/profiles
    rm -rf "$profiles"
    mkdir -p "$profiles"
    # Two files for each program, into which all of its processes count.
    LLVM_PROFILE_FILE=$profiles/%2m.profraw run_ctest build/coverage -E "$not_covered"
}

long_coverage() {
    [[ $# -eq 0 ]] || fail "usage: ./dev test-long coverage"
    need_to_check
    need_plot
    run_stage "build for coverage" build coverage
    run_stage "tests for coverage" run_covered_tests
    run_stage "coverage" tools/coverage.py build/coverage build/coverage/profiles
}

# long_mutants [OPTION...]: see tools/mutants.py.
long_mutants() {
    need_to_test
    run_stage "mutants" tools/mutants.py --keep-going "$@"
}

# long_lab [--minutes N] [--seed N]: for how long the shop is open, and what happens in it.
long_lab() {
    local minutes=30 seed=() system
    while [[ $# -ge 2 ]]; do
        case $1 in
            --minutes) minutes=$2 ;;
            --seed) seed=(--seed "$2") ;;
            *) break ;;
        esac
        shift 2
    done
    [[ $# -eq 0 ]] || fail "usage: ./dev test-long lab [--minutes N] [--seed N]"
    need_to_test
    need_for_lab
    run_stage "build for the lab" build_lab
    for system in today next; do
        run_stage "set up the lab, Debian of $system" prepare_lab "$system"
        run_stage "the lab, all but the longest, Debian of $system" boot_lab "$system" full ""
    done
    run_stage "the lab, $minutes minutes of shop, Debian of today and of next" open_shops "$minutes" "${seed[@]}"
}

# open_shops MINUTES [OPTION...]: one machine of each system, both at once.
open_shops() {
    local system status=0 shops=()
    for system in today next; do
        boot_lab "$system" long "" --machines 1 --minutes "$@" &
        shops+=($!)
    done
    for system in "${shops[@]}"; do wait "$system" || status=$?; done
    return "$status"
}

# Tests in which several threads meet, by name.
threaded='Thread|Stress|Timer|LogWriter|AtomicShared|WakeUp|SystemPlatform|RealPace|Console|Singleton|Calibration'

long_soak() {
    [[ $# -eq 0 ]] || fail "usage: ./dev test-long soak"
    need_to_check
    want_plot
    run_stage "build with clang and the thread sanitizer" build tsan
    run_stage "threads, again and again" run_ctest build/tsan -R "$threaded" --repeat until-fail:20
    run_stage "build" build dev
    run_stage "memory" tools/soak.py build/dev/apps/nearcast/nearcast
}
