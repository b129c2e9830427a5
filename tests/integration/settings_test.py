# SPDX-License-Identifier: Apache-2.0
"""Every command that reads a settings file says what is odd about it, and uses it as it is."""

import json
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

ADDRESS = "02:4E:43:00:00:01"
LINE = '{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF024E43000001", "RSSI": -60}\n'
ORDINARY = {"RADIO": "replay:heard.jsonl?speed=max", "SECONDS": "8"}

GOOD = {"BT:Bar": {"Device Type": "Printer", "MAC Address": ADDRESS, "Threshold RSSI": -70}}
ODD = {
    "BT:Bar": {"Device Type": "Printer", "MAC Address": ADDRESS, "Threshold RSSI": -70},
    "BT:Case": {"MAC Address": "02:4e:43:00:00:02"},
    "BT:Far": {"MAC Address": "02:4E:43:00:00:03", "Threshold RSSI": -128},
    "BT:Kind": {"MAC Address": "02:4E:43:00:00:04", "Device Type": "printer"},
    "BT:None": {"Nick Name": "x"},
    "BT:Second": {"MAC Address": ADDRESS},
    "BT:Text": {"MAC Address": "02:4E:43:00:00:05", "Threshold RSSI": "-65"},
}
FINDINGS = (
    '"BT:Case": MAC Address "02:4e:43:00:00:02" matches only a dongle heard by this very spelling',
    '"BT:Far": Threshold RSSI is outside -127 to 20',
    '"BT:Kind": Device Type "printer" is unknown',
    '"BT:None": MAC Address is missing',
    f'"BT:Second": MAC Address "{ADDRESS}" is that of "BT:Bar" too',
    '"BT:Text": Threshold RSSI is no number',
)


def readers():
    """The commands that read settings, each with what it is given so that it ends soon."""
    for command in commands():
        if not any(option.name == "--settings" and option.type == "FILE" for option in command.options):
            continue
        always = [option for option in command.options if option.type in ORDINARY and option.needs == []]
        given = [f"{option.name}={ORDINARY[option.type]}" for option in always]
        yield command.name, given + (["heard.jsonl"] if command.positionals else [])


class OddSettings(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write("heard.jsonl", "".join(LINE % (at / 10) for at in range(100)))
        self.write("heard.truth.jsonl", '{"at": 0, "truth": "%s"}\n' % ADDRESS)
        self.write("good.json", json.dumps(GOOD))
        self.write("odd.json", json.dumps(ODD))

    def run_with(self, settings, command, arguments):
        return subprocess.run([PROGRAM, command, *arguments, f"--settings={settings}"], cwd=self.folder, text=True,
                              capture_output=True, timeout=DEADLINE, stdin=subprocess.DEVNULL, check=False)

    def test_each_is_named_once_with_its_device_and_member_by_every_command(self):
        found = list(readers())
        self.assertGreaterEqual(len(found), 4)
        for command, arguments in found:
            with self.subTest(command):
                result = self.run_with("odd.json", command, arguments)
                said = result.stdout if command == "doctor" else result.stderr
                for finding in FINDINGS:
                    self.assertEqual(said.count(f"odd.json: {finding}"), 1, said)
                self.assertEqual(said.count("odd.json: "), len(FINDINGS), said)

    def test_they_do_not_change_the_status(self):
        for command, arguments in readers():
            if command == "doctor":  # whose remarks they are
                continue
            with self.subTest(command):
                good = self.run_with("good.json", command, arguments)
                self.assertNotIn("good.json", good.stderr)
                self.assertEqual(self.run_with("odd.json", command, arguments).returncode, good.returncode)

    def test_the_file_is_used_as_it_is_and_left_alone(self):
        before = (self.folder / "odd.json").read_bytes()
        result = self.run_with("odd.json", "watch", ["--radio=replay:heard.jsonl?speed=max", "--json"])
        self.assertIn('"portName": "BT:', result.stdout)
        self.assertEqual((self.folder / "odd.json").read_bytes(), before)

    def test_what_the_simulator_gives_is_not_odd(self):
        path = self.write("scene.json", nearcast("scene", "--settings").stdout)
        for command, arguments in readers():
            with self.subTest(command):
                self.assertNotIn("MAC Address", self.run_with(path, command, arguments).stderr)


if __name__ == "__main__":
    main()
