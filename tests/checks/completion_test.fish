#!/usr/bin/env fish
# SPDX-License-Identifier: Apache-2.0
# What the completion for fish offers. Usage: completion_test.fish ROOT
source $argv[1]/packaging/completion/nearcast.fish

function nearcast
    printf '%s  yes  about\n' auto bluez bluez:hci0 bluez:00:1A:7D:DA:71:13 hci:0
end

set -g failures 0

# offers LINE WORD...: for the line typed so far, exactly these words, in any order.
function offers
    set -l got (complete -C "$argv[1]" | string replace -r '\t.*' '' | sort)
    set -l expected (printf '%s\n' $argv[2..] | sort)
    if test "$got" != "$expected"
        echo "'$argv[1]': expected '$expected', got '$got'"
        set failures (math $failures + 1)
    end
end

set -l folder (mktemp -d)
cd $folder
touch shop.pcapng scene.json

offers 'nearcast ' watch record run import scene evaluate report radios doctor help version
offers 'nearcast help ' watch record run import scene evaluate report radios doctor
offers 'nearcast version '
offers 'nearcast w' watch
offers 'nearcast watch --radio ' auto bluez bluez: hci none simulator simulator: replay:
offers 'nearcast watch --radio bluez:' bluez:hci0 bluez:00:1A:7D:DA:71:13
offers 'nearcast watch --radio replay:sh' replay:shop.pcapng
offers 'nearcast doctor --radio simulator:' simulator:scene.json simulator:shop.pcapng
offers 'nearcast evaluate --rule ka' kalman-quick kalman-calm
offers 'nearcast evaluate --set sta' staleFor=
offers 'nearcast evaluate --l' --list-rules
offers 'nearcast scene --t' --truth
offers 'nearcast report sh' shop.pcapng

cd /
rm -r $folder
test $failures -eq 0
