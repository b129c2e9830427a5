# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# What all commands of ./dev share.

fail() {
    printf './dev: %s\n' "$*" >&2
    exit 1
}

# Stages: their names and times, for the summary, and for saying which one failed.
stage=
stages=()
tell_failure() {
    local status=$?
    [[ $status -eq 0 || -z $stage ]] || printf '\n./dev: failed: %s\n' "$stage" >&2
    exit "$status"
}
trap tell_failure EXIT

# run_stage NAME COMMAND...: not to be called as a condition, for the shell would then go on after an error.
run_stage() {
    stage=$1
    shift
    local begin=$SECONDS
    printf '\n=== %s\n' "$stage"
    "$@"
    stages+=("$(printf '%5d s  %s' $((SECONDS - begin)) "$stage")")
    stage=
}

tell_stages() {
    printf '\n=== so far\n'
    printf '%s\n' "${stages[@]}"
}
