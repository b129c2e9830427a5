# SPDX-License-Identifier: Apache-2.0
# Completion of nearcast for fish.

set -l commands watch record run import scene evaluate report radios doctor
set -l rules 'strongest-report maximum-7 trimmed-mean-20s exponential-0.1 kalman-quick kalman-calm median-7 strongest-raw nearest'
set -l settings 'defaultThreshold= hysteresis= dwell= margin= patience= closeSignal= closeTime= contrast= anticipation= attack= decay= silence= staleFor='
set -l formats 'jsonl btsnoop pcapng jsonl.gz btsnoop.gz pcapng.gz'
function __nearcast_radios
    set -l typed (commandline -ct)
    if set -l kind (string match -r '^(?:simulator|replay):' -- $typed)
        set -l file (string replace $kind '' -- $typed)
        printf '%s\n' $kind(__fish_complete_path $file)
    else if string match -q 'bluez:*' -- $typed
        nearcast radios 2>/dev/null | string match -r '^bluez:\S+'
    else
        printf '%s\n' auto bluez bluez: hci none simulator simulator: replay:
    end
end
set -l radios '(__nearcast_radios)'

set -l first "not __fish_seen_subcommand_from $commands help version"

complete -c nearcast -n $first -f
complete -c nearcast -n $first -s V -l version -d 'Print the version'
complete -c nearcast -s h -l help -d 'Print help'
complete -c nearcast -n $first -a watch -d 'Show which devices are near'
complete -c nearcast -n $first -a record -d 'Write down what a radio hears'
complete -c nearcast -n $first -a run -d 'Run a scenario'
complete -c nearcast -n $first -a import -d 'Turn a capture into a recording'
complete -c nearcast -n $first -a scene -d 'Print or check a scene'
complete -c nearcast -n $first -a evaluate -d 'Measure who is nearest'
complete -c nearcast -n $first -a report -d 'Make a page of a recording'
complete -c nearcast -n $first -a radios -d 'List the radios'
complete -c nearcast -n $first -a doctor -d 'Find out why a scan does not work'
complete -c nearcast -n $first -a help -d 'Print help'
complete -c nearcast -n $first -a version -d 'Print the version'
complete -c nearcast -n '__fish_seen_subcommand_from help' -f -a "$commands"
complete -c nearcast -n '__fish_seen_subcommand_from version' -f

complete -c nearcast -n '__fish_seen_subcommand_from watch' -l radio -x -a "$radios" -d 'The radio'
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l settings -r -F -d 'The registered devices'
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l for -x -d "Seconds of the radio's time"
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l json -d 'Print JSON Lines'

complete -c nearcast -n '__fish_seen_subcommand_from record' -l radio -x -a "$radios" -d 'The radio'
complete -c nearcast -n '__fish_seen_subcommand_from record' -l for -x -d "Seconds of the radio's time"
complete -c nearcast -n '__fish_seen_subcommand_from record' -s o -l output -r -F -d 'The file to write'
complete -c nearcast -n '__fish_seen_subcommand_from record' -l format -x -a "$formats" -d 'The format of standard output'

complete -c nearcast -n '__fish_seen_subcommand_from run' -l trace -d 'Print the trace records too'
complete -c nearcast -n '__fish_seen_subcommand_from run' -l locks -d 'Print the locks too'

complete -c nearcast -n '__fish_seen_subcommand_from import' -l services -x -a any -d 'Let every report pass'
complete -c nearcast -n '__fish_seen_subcommand_from import' -l as -x -a dongles -d 'Let every sender play a dongle'
complete -c nearcast -n '__fish_seen_subcommand_from import' -s o -l output -r -F -d 'The file to write'
complete -c nearcast -n '__fish_seen_subcommand_from import' -l format -x -a "$formats" -d 'The format of standard output'

complete -c nearcast -n '__fish_seen_subcommand_from scene' -l settings -d "Print the scene's devices"
complete -c nearcast -n '__fish_seen_subcommand_from scene' -l truth -d 'Print which dongle is nearest to the user'
complete -c nearcast -n '__fish_seen_subcommand_from scene' -l for -x -d 'Seconds of truth'

complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l truth -r -F -d 'Where the user stood'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l rule -x -a "$rules" -d 'Only this rule'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l settings -r -F -d 'The registered devices'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l set -x -a "$settings" -d 'A setting of nearest'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l sweep -x -a "$settings" -d 'Try values of a setting'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l html -r -F -d 'Write a page too'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l advise -d 'Propose thresholds'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l write -r -F -d 'Write settings with the thresholds'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l json -d 'Print one JSON object'
complete -c nearcast -n '__fish_seen_subcommand_from evaluate' -l list-rules -d 'Print the rules'

complete -c nearcast -n '__fish_seen_subcommand_from report' -s o -l output -r -F -d 'The page to write'
complete -c nearcast -n '__fish_seen_subcommand_from report' -l settings -r -F -d 'The registered devices'
complete -c nearcast -n '__fish_seen_subcommand_from report' -l set -x -a "$settings" -d 'A setting of the decision'
complete -c nearcast -n '__fish_seen_subcommand_from report' -l truth -r -F -d 'Where the user stood'
complete -c nearcast -n '__fish_seen_subcommand_from report' -l title -x -d "The page's title"

complete -c nearcast -n '__fish_seen_subcommand_from radios' -l json -d 'Print a JSON array'

complete -c nearcast -n '__fish_seen_subcommand_from doctor' -l radio -x -a "$radios" -d 'The radio'
complete -c nearcast -n '__fish_seen_subcommand_from doctor' -l settings -r -F -d 'The devices to be checked'
complete -c nearcast -n '__fish_seen_subcommand_from doctor' -l for -x -d 'Seconds to listen'
complete -c nearcast -n '__fish_seen_subcommand_from doctor' -l json -d 'Print one JSON object'
