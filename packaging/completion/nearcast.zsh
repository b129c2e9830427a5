#compdef nearcast
# SPDX-License-Identifier: Apache-2.0
# Completion of nearcast for zsh.

_nearcast_radio() {
    if compset -P 1 '(simulator|replay):'; then
        _files
    elif compset -P 1 'bluez:'; then
        local -a adapters=($(nearcast radios 2>/dev/null | sed -n 's/^bluez:\([^ ]*\) .*/\1/p'))
        compadd -a adapters
    else
        compadd auto bluez hci none simulator
        compadd -S '' bluez: simulator: replay:
    fi
}

_nearcast_command() {
    local -a commands=(
        'watch:show which devices are near, and which have fallen silent'
        'record:write down all that a radio hears'
        'run:run a scenario on a virtual clock and print what the manager shows'
        'import:turn a recording of any kind into one of another'
        "scene:print the simulator's built-in scene, or check one of your own"
        'evaluate:measure who is nearest on recordings whose truth is known'
        'report:make a page of a recording'
        'radios:list the radios that can be opened here'
        'doctor:find out what stands between you and a working scan'
    )
    [[ $1 == all ]] && commands+=('help:print help' 'version:print the version')
    _describe command commands
}

_nearcast() {
    local curcontext=$curcontext state line
    _arguments -C '(- *)'{-h,--help}'[print help]' '(- *)'{-V,--version}'[print the version]' \
        '1: :_nearcast_command all' '*:: :->arguments'
    [[ $state == arguments ]] || return
    local -a settings=(defaultThreshold hysteresis dwell margin patience closeSignal closeTime contrast anticipation attack decay
        silence staleFor)
    local -a formats=(jsonl btsnoop pcapng jsonl.gz btsnoop.gz pcapng.gz)
    case $words[1] in
        watch)
            _arguments '--radio[the radio to listen with]:radio:_nearcast_radio' \
                '--settings[the registered devices]:file:_files' \
                "--for[end after so many seconds of the radio's time]:seconds:" \
                '--json[print JSON Lines]' '(- *)'{-h,--help}'[print help]'
            ;;
        record)
            _arguments '--radio[the radio to listen with]:radio:_nearcast_radio' \
                "--for[end after so many seconds of the radio's time]:seconds:" \
                '(-o --output)'{-o,--output}'[the file to write]:file:_files' \
                "--format[the format of standard output]:format:($formats)" '(- *)'{-h,--help}'[print help]'
            ;;
        run)
            _arguments '--trace[print the trace records too]' \
                '--locks[print the taking and releasing of the locks too]' \
                '(- *)'{-h,--help}'[print help]' '*:scenario:_files'
            ;;
        import)
            _arguments '--services[let every report pass the service filter]:services:(any)' \
                '--as[let every sender play a dongle]:senders:(dongles)' \
                '(-o --output)'{-o,--output}'[the file to write]:file:_files' \
                "--format[the format of standard output]:format:($formats)" \
                '(- *)'{-h,--help}'[print help]' '1:capture:_files'
            ;;
        scene)
            _arguments "--settings[print the scene's devices as a settings file]" \
                "--truth[print which dongle is nearest to the scene's user]" '--for[seconds of truth]:seconds:' \
                '(- *)'{-h,--help}'[print help]' '1:scene:_files'
            ;;
        evaluate)
            local -a rules=(strongest-report maximum-7 trimmed-mean-20s exponential-0.1 kalman-quick kalman-calm
                median-7 strongest-raw nearest)
            _arguments '*--truth[where the user stood]:file:_files' "*--rule[only this rule]:rule:($rules)" \
                '--settings[the registered devices]:file:_files' \
                '*--set[a setting of the rule nearest]:setting:compadd -S = -a settings' \
                '*--sweep[try values of a setting]:setting:compadd -S = -a settings' \
                '--html[write charts and tables as a page too]:file:_files' '--advise[propose thresholds]' \
                '--write[write the settings with the thresholds in them]:file:_files' \
                '--json[print one JSON object]' '--list-rules[print the rules and what they do]' \
                '(- *)'{-h,--help}'[print help]' '*:recording:_files'
            ;;
        report)
            _arguments '(-o --output)'{-o,--output}'[the page to write]:file:_files' \
                '--settings[the registered devices]:file:_files' \
                '*--set[a setting of the decision]:setting:compadd -S = -a settings' \
                '--truth[where the user stood]:file:_files' "--title[the page's title]:title:" \
                '(- *)'{-h,--help}'[print help]' '1:recording:_files'
            ;;
        radios)
            _arguments '--json[print a JSON array]' '(- *)'{-h,--help}'[print help]'
            ;;
        doctor)
            _arguments '--radio[the radio to listen with]:radio:_nearcast_radio' \
                '--settings[the registered devices to be checked]:file:_files' \
                '--for[listen for so many seconds]:seconds:' \
                '--json[print one JSON object]' '(- *)'{-h,--help}'[print help]'
            ;;
        help)
            _arguments '1: :_nearcast_command'
            ;;
    esac
}

_nearcast "$@"
