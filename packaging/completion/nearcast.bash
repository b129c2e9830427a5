# SPDX-License-Identifier: Apache-2.0
# Completion of nearcast for bash.

_nearcast_commands='watch record run import scene evaluate report radios doctor'
_nearcast_rules='strongest-report maximum-7 trimmed-mean-20s exponential-0.1 kalman-quick kalman-calm median-7
    strongest-raw nearest'
_nearcast_nearest_settings='defaultThreshold hysteresis dwell margin patience closeSignal closeTime contrast anticipation
    attack decay silence staleFor'

_nearcast_radio() {
    local word=$1 files
    case $word in
        simulator:* | replay:*)
            # bash splits words at colons, so only what follows the colon is completed.
            mapfile -t files < <(compgen -f -- "${word#*:}")
            COMPREPLY=("${files[@]//\?/\\?}")  # or it would begin the options
            compopt -o filenames
            ;;
        bluez:*)
            mapfile -t COMPREPLY < <(compgen -W "$(nearcast radios 2>/dev/null | grep -o '^bluez:[^ ]*')" -- "$word")
            COMPREPLY=("${COMPREPLY[@]#"${word%:*}:"}")
            ;;
        *)
            mapfile -t COMPREPLY < <(compgen -W 'auto bluez bluez: hci none simulator simulator: replay:' -- "$word")
            [[ ${COMPREPLY[0]-} == *: ]] && compopt -o nospace
            ;;
    esac
}

# The words of the line with those that bash split at a colon put together again: the last two of them.
_nearcast_words() {
    local line=${COMP_LINE:0:COMP_POINT} parts
    read -ra parts <<<"$line"
    [[ $line == *' ' ]] && parts+=('')
    current=${parts[-1]}
    previous=${parts[-2]-}
    command=${parts[1]-}
    [[ ${#parts[@]} -gt 2 ]] || command=
}

_nearcast() {
    local current previous command options
    _nearcast_words
    COMPREPLY=()
    case $previous in
        --radio) _nearcast_radio "$current" && return ;;
        --settings) [[ $command =~ ^(watch|evaluate|report|doctor)$ ]] && compopt -o default && return ;;
        --truth) [[ $command =~ ^(evaluate|report)$ ]] && compopt -o default && return ;;
        --html | --write) compopt -o default && return ;;
        --rule) mapfile -t COMPREPLY < <(compgen -W "$_nearcast_rules" -- "$current") && return ;;
        --set | --sweep)
            mapfile -t COMPREPLY < <(compgen -S = -W "$_nearcast_nearest_settings" -- "$current")
            compopt -o nospace && return
            ;;
        --title) return ;;
        --for) return ;;
        --services) COMPREPLY=(any) && return ;;
        --as) COMPREPLY=(dongles) && return ;;
        --format)
            mapfile -t COMPREPLY < <(compgen -W 'jsonl btsnoop pcapng jsonl.gz btsnoop.gz pcapng.gz' -- "$current")
            return
            ;;
        -o | --output) compopt -o default && return ;;
    esac
    case $command in
        watch) options='--radio --settings --for --json --help' ;;
        record) options='--radio --for --output --format --help' ;;
        run) options='--trace --locks --help' ;;
        import) options='--services --as --output --format --help' ;;
        scene) options='--settings --truth --for --help' ;;
        evaluate) options='--truth --rule --settings --set --sweep --html --advise --write --json --list-rules --help' ;;
        report) options='--output --settings --set --truth --title --help' ;;
        radios) options='--json --help' ;;
        doctor) options='--radio --settings --for --json --help' ;;
        help) mapfile -t COMPREPLY < <(compgen -W "$_nearcast_commands" -- "$current") && return ;;
        version) return ;;
        *) options="$_nearcast_commands help version --version --help" ;;
    esac
    if [[ $current == -* || -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    else
        compopt -o default
    fi
}

complete -F _nearcast nearcast
