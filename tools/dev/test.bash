# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Testing.

# run_ctest DIRECTORY [CTEST OPTION...]
run_ctest() {
    local directory=$1
    shift
    # Whatever the tests do with time, it does not depend on where we are.
    TZ=XXX-10:30 UBSAN_OPTIONS=print_stacktrace=1 TSAN_OPTIONS=second_deadlock_stack=1 "${without_random_addresses[@]}" \
        ctest --test-dir "$directory" --output-on-failure --no-tests=error --parallel "$(nproc)" "$@"
}

# The thread sanitizer of clang 14 ends at once where addresses are spread wider than it knows (vm.mmap_rnd_bits 32,
# the default of newer kernels).
without_random_addresses=()
if [[ $(cat /proc/sys/vm/mmap_rnd_bits 2>/dev/null || echo 0) -gt 28 ]] && setarch -R true 2>/dev/null; then
    without_random_addresses=(setarch -R)
fi

# One ctest for the tests of several builds.
join_builds() {
    printf 'subdirs(%s)\n' "$*" >build/CTestTestfile.cmake
}

run_quick() {
    need_to_test
    want_plot
    run_stage "build" build dev
    run_stage "tests" run_ctest build/dev ${1:+-R "$1"}
}

run_test() {
    need_to_test
    need_plot
    need_for_lab
    run_stage "format" check_format
    run_stage "scripts" check_scripts
    run_stage "build" build dev
    run_stage "set up the lab" prepare_lab
    tell_stages
    run_stage "tests" run_ctest build/dev
}

# What `test` leaves out. The build with the thread sanitizer has no precompiled headers, so that an include line that is
# missing shows.
run_check() {
    need_to_check
    need_plot
    run_stage "reference" make_docs
    run_stage "build with clang and the address and undefined-behaviour sanitizers" build asan
    run_stage "clang-tidy" tools/tidy.py build/asan src/ apps/ examples/
    run_stage "build with clang and the thread sanitizer" build tsan
    # GCC warns of other things at -O3, and a warning is an error there too.
    run_stage "build what ships" build release -DNEARCAST_TESTS=OFF
    join_builds asan tsan
    tell_stages
    run_stage "tests with sanitizers" run_ctest build
}

# The fuzzers are part of the build with the address sanitizer, where their tests run them for a moment.
build_fuzzers() {
    configure_in build/asan asan
    cmake --build build/asan --target fuzzers -- -k 0
}

run_fuzzers() {
    local seconds=$1 fuzzer name
    for fuzzer in build/asan/fuzz/fuzz_*; do
        [[ -x $fuzzer && -f $fuzzer ]] || continue
        name=${fuzzer##*/fuzz_}
        printf '\n--- %s, %d s\n' "$name" "$seconds"
        "$fuzzer" -max_total_time="$seconds" -timeout=20 -print_final_stats=1 \
            -artifact_prefix="build/asan/fuzz/found/$name-" "build/asan/fuzz/corpus/$name" "fuzz/seeds/$name"
    done
}

run_fuzz() {
    need_to_check
    want_plot
    run_stage "build the fuzzers" build_fuzzers
    run_stage "fuzz" run_fuzzers "${1:-60}"
}
