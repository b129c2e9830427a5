# SPDX-License-Identifier: Apache-2.0
"""The mistakes that a newcomer is most likely to make: each gets a sentence that says what to do instead."""

import json
import re

from nearcast_program import ProgramTest, commands, main, nearcast

ADDRESS = "02:4E:43:00:00:01"

# What is typed, the exit status, what is said of it, and whose help it points to (None: it is no matter of the help).
MISTAKES = (
    # Nothing, or no command.
    ("", 2, "a command is needed: watch, record, run, import, scene, evaluate, report, radios or doctor; "
     "'nearcast watch --radio simulator' shows a simulated shop", "nearcast"),
    ("wach", 2, "there is no command 'wach'; did you mean 'watch'?", "nearcast"),
    ("eval walk.jsonl", 2, "there is no command 'eval'; did you mean 'evaluate'?", "nearcast"),
    ("Watch", 2, "there is no command 'Watch'; did you mean 'watch'?", "nearcast"),
    ("scan", 2, "there is no command 'scan'; did you mean 'watch'?", "nearcast"),
    ("hlep watch", 2, "there is no command 'hlep'; did you mean 'help'?", "nearcast"),
    ("play walk.jsonl", 2, "there is no command 'play'; did you mean 'watch'?", "nearcast"),
    ("list", 2, "there is no command 'list'; did you mean 'radios'?", "nearcast"),
    ("frobnicate", 2, "there is no command 'frobnicate'; there are watch, record, run", "nearcast"),
    ("simulator", 2, "there is no command 'simulator'; did you mean 'nearcast watch --radio simulator'?", "nearcast"),
    ("walk.jsonl", 2, "did you mean 'nearcast watch --radio replay:walk.jsonl'?", "nearcast"),
    # Options where there are none.
    ("--radio simulator", 2, "there is no option '--radio' before a command; watch, record and doctor have it, as in "
     "'nearcast watch --radio'", "nearcast"),
    ("--radio simulator watch", 2, "there is no option '--radio' before a command", "nearcast"),
    ("-v", 2, "there is no option '-v'; did you mean '-V'?", "nearcast"),
    ("--verbose", 2, "there is no option '--verbose'", "nearcast"),
    ("watch --verbose", 2, "there is no option '--verbose'", "nearcast watch"),
    ("watch --setings devices.json", 2, "there is no option '--setings'; did you mean '--settings'?",
     "nearcast watch"),
    ("watch --setings=devices.json", 2, "there is no option '--setings'; did you mean '--settings'?",
     "nearcast watch"),
    ("report walk.jsonl --out page.html", 2, "there is no option '--out'; did you mean '--output'?",
     "nearcast report"),
    ("record --json", 2, "there is no option '--json'; watch, evaluate, radios and doctor have it", "nearcast record"),
    ("watch --version", 2, "there is no option '--version'; it stands before a command, as in 'nearcast --version'",
     "nearcast watch"),
    # A radio or a file without the option that takes it.
    ("watch simulator", 2, "'simulator' is not expected: did you mean '--radio simulator'?", "nearcast watch"),
    ("watch walk.jsonl", 2, "'walk.jsonl' is not expected: did you mean '--radio replay:walk.jsonl'?",
     "nearcast watch"),
    ("watch shop.json", 2, "'shop.json' is not expected: did you mean '--radio simulator:shop.json'?",
     "nearcast watch"),
    ("watch devices.json", 2, "'devices.json' is not expected: did you mean '--settings devices.json'?",
     "nearcast watch"),
    ("watch --radio walk.jsonl", 2, "; did you mean 'replay:walk.jsonl'?", "nearcast watch"),
    ("watch --radio shop.json", 2, "; did you mean 'simulator:shop.json'?", "nearcast watch"),
    ("watch --radio simulater", 2, "there is no radio 'simulater' (known: auto, bluez, none, hci, simulator, replay); "
     "did you mean 'simulator'?", "nearcast watch"),
    ("watch --radio hci0", 2, "; did you mean 'bluez:hci0'?", "nearcast watch"),
    ("watch --radio replay", 2, "it needs a recording, as in replay:FILE", "nearcast watch"),
    ("doctor hci0", 2, "'hci0' is not expected: did you mean '--radio bluez:hci0'?", "nearcast doctor"),
    ("radios simulator", 2, "'simulator' is not expected: radios takes options alone", "nearcast radios"),
    # Files.
    ("report", 2, "a RECORDING is needed, as in 'nearcast report shop.jsonl -o shop.html'", "nearcast report"),
    ("import", 2, "a CAPTURE is needed, as in 'nearcast import shop.pcapng -o shop.jsonl'", "nearcast import"),
    ("run", 2, "a FILE is needed, as in 'nearcast run scenario.jsonl'", "nearcast run"),
    ("evaluate", 2, "a RECORDING is needed, as in 'nearcast evaluate walk.jsonl'",
     "nearcast evaluate"),
    ("report walk.jsonl other.jsonl", 2, "'other.jsonl' is not expected: report takes one RECORDING",
     "nearcast report"),
    ("report none.jsonl", 1, "none.jsonl: cannot be opened: No such file or directory", None),
    ("evaluate other.jsonl", 2, "other.jsonl: where its user stood is not known: there is no other.truth.jsonl; name "
     "another file with --truth", "nearcast evaluate"),
    ("evaluate walk.jsonl other.jsonl --truth walk.truth.jsonl", 2,
     "2 recordings, but 1 truth files: one for each is needed", "nearcast evaluate"),
    ("report devices.json", 2, "; it is a settings file, for --settings", None),
    ("report shop.json", 2, "; it is a scene, for --radio simulator:shop.json", None),
    ("run devices.json", 2, "; it is a settings file, for --settings", None),
    ("run walk.btsnoop", 0, "nothing was shown: ", None),
    ("run walk.jsonl", 0, "nothing was shown: a scenario sets a delegate and starts a scan; a recording alone is for "
     "'nearcast watch --radio replay:FILE'", None),
    ("import README", 1, "README: no recording (neither JSON Lines nor btsnoop, pcap or pcapng)", None),
    ("watch --radio none --for 0 --settings walk.jsonl", 2, "walk.jsonl: ", None),
    # Values.
    ("watch --for 5s", 2, "--for: '5s' is no number of seconds from 0 to 1000000000; a time has no unit: 5",
     "nearcast watch"),
    ("watch --for 1.5h", 2, "a time has no unit: 5400", "nearcast watch"),
    ("watch --for=", 2, "--for: is empty", "nearcast watch"),
    ("watch --for", 2, "--for needs a value: SECONDS", "nearcast watch"),
    ("watch --for 1 --for 2", 2, "--for is given 2 times", "nearcast watch"),
    ("watch --for -1", 2, "'-1' is no number of seconds from 0 to 1000000000", "nearcast watch"),
    ("watch --json=yes-please", 2, "--json takes no value", "nearcast watch"),
    ("watch -- simulator", 2, "'simulator' is not expected: did you mean '--radio simulator'?", "nearcast watch"),
    ("report walk.jsonl --set patience", 2, "'patience' is not of the form KEY=VALUE", "nearcast report"),
    ("report walk.jsonl --set patient=3", 2, "there is no setting 'patient'", "nearcast report"),
    ("report walk.jsonl --set patience=-1", 2, "patience is -1, and has to be ", "nearcast report"),
    ("import walk.jsonl --as cows", 2, "'as' can be 'dongles'", "nearcast import"),
    ("evaluate walk.jsonl --rule neerest", 2, "there is no rule 'neerest' (known: ", "nearcast evaluate"),
    ("evaluate walk.jsonl --write new.json", 2, "--write needs --advise and --settings", "nearcast evaluate"),
    ("evaluate walk.jsonl --advise --html page.html", 2, "exclude each other", "nearcast evaluate"),
    ("scene --for 5", 2, "--for needs --truth", "nearcast scene"),
)


# What a newcomer calls the commands.
OTHER_NAMES = ("scan listen monitor show start play replay simulate capture save sniff convert list adapters devices "
               "check diagnose status score compare page plot").split()


class Mistakes(ProgramTest):
    def setUp(self):
        super().setUp()
        line = json.dumps({"at": 0, "do": "advertise", "manufacturerData": "FFFF024E43000001", "RSSI": -50}) + "\n"
        self.write("walk.jsonl", line)
        self.write("other.jsonl", line)
        self.write("walk.truth.jsonl", json.dumps({"at": 0, "truth": ADDRESS}) + "\n")
        self.write("shop.json", nearcast("scene").stdout)
        self.write("devices.json", '{\n"BT:Bar": {}}')
        made = nearcast("record", "--radio", "replay:walk.jsonl?speed=max", "-o", "walk.btsnoop", cwd=self.folder)
        self.assertEqual(made.returncode, 0, made.stderr)
        self.write("README", "Some words.\n")

    def test_each_gets_a_sentence_that_helps(self):
        names = [command.name for command in commands()]
        for typed, status, sentence, pointed in MISTAKES:
            with self.subTest(typed=typed):
                words = typed.split()
                result = nearcast(*words, cwd=self.folder)
                self.assertEqual((result.returncode, result.stdout), (status, ""), result.stderr)
                said = result.stderr.splitlines()
                place = f"nearcast {words[0]}" if words and words[0] in names else "nearcast"
                self.assertTrue(said[0].startswith(place + ": "), result.stderr)
                self.assertIn(sentence, said[0])
                self.assertEqual(said[1:], [f"Try '{pointed} --help'."] if pointed else [], result.stderr)

    def test_what_commands_are_called_elsewhere_leads_to_one_that_there_is(self):
        names = [command.name for command in commands()]
        for other in OTHER_NAMES:
            with self.subTest(name=other):
                self.assertNotIn(other, names, "it is a command of its own by now")
                said = nearcast(other).stderr.splitlines()[0]
                meant = re.fullmatch(rf"nearcast: there is no command '{other}'; did you mean '(\w+)'\?", said)
                self.assertIn(meant and meant.group(1), names, said)

    def test_a_word_that_runs_over_the_screen_is_not_searched_for(self):
        result = nearcast("w" * 100_000)
        self.assertEqual(result.returncode, 2)
        self.assertNotIn("did you mean", result.stderr)


if __name__ == "__main__":
    main()
