#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What the completion for bash offers. Usage: completion_test.bash ROOT
set -euo pipefail

# shellcheck source=/dev/null
source "$1/packaging/completion/nearcast.bash"
# shellcheck disable=SC2317  # called by the completion
compopt() { :; }  # the real one works only while the shell itself completes
# shellcheck disable=SC2317
nearcast() { printf '%s  yes  about\n' auto bluez bluez:hci0 bluez:00:1A:7D:DA:71:13 hci:0; }
failures=0

# offers LINE WORD...: for the line typed so far, exactly these words.
offers() {
    COMP_LINE=$1
    COMP_POINT=${#COMP_LINE}
    shift
    COMPREPLY=()
    _nearcast
    if [[ "${COMPREPLY[*]-}" != "$*" ]]; then
        printf "'%s': expected '%s', got '%s'\n" "$COMP_LINE" "$*" "${COMPREPLY[*]-}"
        failures=$((failures + 1))
    fi
}

cd "$(mktemp -d)"
trap 'rm -r "$PWD"' EXIT
touch shop.pcapng scene.json

offers 'nearcast ' watch record run import scene evaluate report radios doctor help version --version --help
offers 'nearcast w' watch
offers 'nearcast help ' watch record run import scene evaluate report radios doctor
offers 'nearcast help re' record report
offers 'nearcast version '
offers 'nearcast --v' --version
offers 'nearcast watch -' --radio --settings --for --json --help
offers 'nearcast watch --radio ' auto bluez bluez: hci none simulator simulator: replay:
offers 'nearcast watch --radio bluez:' hci0 00:1A:7D:DA:71:13
offers 'nearcast watch --radio bluez:h' hci0
offers 'nearcast watch --radio bluez:00:1' 1A:7D:DA:71:13
offers 'nearcast watch --radio bluez:x'
offers 'nearcast watch --radio re' replay:
offers 'nearcast watch --radio replay:sh' shop.pcapng
offers 'nearcast watch --json --radio simulator:' scene.json shop.pcapng
touch 'what?.jsonl'
offers 'nearcast watch --radio replay:w' 'what\?.jsonl'
rm 'what?.jsonl'
offers 'nearcast watch --for '
offers 'nearcast record -' --radio --for --output --format --help
offers 'nearcast record --format p' pcapng pcapng.gz
offers 'nearcast doctor --radio b' bluez bluez:
offers 'nearcast doctor -' --radio --settings --for --json --help
offers 'nearcast radios -' --json --help
offers 'nearcast run --' --trace --locks --help
offers 'nearcast import --a' --as
offers 'nearcast import --as ' dongles
offers 'nearcast import --services ' any
offers 'nearcast import --output '
offers 'nearcast import --format jsonl.' jsonl.gz
offers 'nearcast evaluate --l' --list-rules
offers 'nearcast evaluate --rule ka' kalman-quick kalman-calm
offers 'nearcast evaluate --set sta' staleFor=
offers 'nearcast evaluate --truth '
offers 'nearcast evaluate --advise --w' --write
offers 'nearcast scene -' --settings --truth --for --help
offers 'nearcast report -' --output --settings --set --truth --title --help
offers 'nearcast report --settings '
offers 'nearcast report --set att' attack=
offers 'nearcast scene '

exit $((failures != 0))
