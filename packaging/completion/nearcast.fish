# SPDX-License-Identifier: Apache-2.0
# Completion of nearcast for fish.

set -l commands watch run import scene
set -l radios 'auto bluez none simulator simulator: replay:'

complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -f
complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c nearcast -s h -l help -d 'Print help'
complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -a watch -d 'Show which devices are near'
complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -a run -d 'Run a scenario'
complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -a import -d 'Turn a capture into a recording'
complete -c nearcast -n "not __fish_seen_subcommand_from $commands" -a scene -d 'Print or check a scene'

complete -c nearcast -n '__fish_seen_subcommand_from watch' -l radio -x -a "$radios" -d 'The radio'
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l settings -r -F -d 'The registered devices'
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l for -x -d "Seconds of the radio's time"
complete -c nearcast -n '__fish_seen_subcommand_from watch' -l json -d 'Print JSON Lines'

complete -c nearcast -n '__fish_seen_subcommand_from run' -l trace -d 'Print the trace records too'
complete -c nearcast -n '__fish_seen_subcommand_from run' -l locks -d 'Print the locks too'

complete -c nearcast -n '__fish_seen_subcommand_from import' -l services -x -a any -d 'Let every report pass'
complete -c nearcast -n '__fish_seen_subcommand_from import' -l as -x -a dongles -d 'Let every sender play a dongle'
complete -c nearcast -n '__fish_seen_subcommand_from import' -s o -l output -r -F -d 'The file to write'

complete -c nearcast -n '__fish_seen_subcommand_from scene' -l settings -d "Print the scene's devices"
