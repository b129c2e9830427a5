# SPDX-License-Identifier: Apache-2.0
"""Nothing that a command prints steers the terminal, whatever the files, the air and the command line hold."""

import json
import os
import pty
import re
import select
import subprocess
import unicodedata

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

# A title for the terminal, a cleared screen, DEL, the same by 8-bit controls, a text that runs backwards, wide letters.
NASTY = "\x1b]0;title\x07\x1b[2J\x7f\x9b31m\x85\u202e\u2066\u200d厨房"
ADDRESS = "02:4E:43:00:00:01"
PAYLOAD = "FFFF024E43000001"


def line(**members):
    return json.dumps(members, ensure_ascii=False) + "\n"


def heard():
    """Two dongles, one that says its address in its name, and a stranger; then one falls silent."""
    lines = []
    for step in range(120):
        at = step / 10
        if step < 40:
            lines.append(line(at=at, do="advertise", name=NASTY, manufacturerData=PAYLOAD, RSSI=-50))
        lines.append(line(at=at, do="advertise", name="QX" + NASTY, manufacturerData="4C00", RSSI=-60))
        lines.append(line(at=at, do="advertise", name=NASTY, manufacturerData="4C00", RSSI=-60, services=[]))
    return "".join(lines)


def scenario():
    registered = {"do": "addSettingForPrinterPortName", "dongleMACAddr": ADDRESS}
    lines = [line(do="setDelegate", implements=["didDiscoverPort:deviceType:MACAddr:RSSI:", "didUpdateState:MACAddr:"]),
             line(**registered, portName=NASTY, nickName=NASTY, portSettings=NASTY),
             line(do="addSettingForPrinterPortName", portName=NASTY, dongleMACAddr=NASTY),
             line(do="settings"), line(do="serializedSettings"), line(do="deserializeSettings", data=NASTY),
             line(do="getRSSI", MACAddr=NASTY), line(do="startScan")]
    return "".join(lines) + heard() + line(do="removeSettingWithPortName", portName=NASTY)


def settings():
    record = {"Device Type": "Printer", "MAC Address": ADDRESS, "Nick Name": NASTY, "Threshold RSSI": -70, NASTY: NASTY}
    return json.dumps({NASTY: record, "BT:Bar": dict(record, **{"MAC Address": NASTY})}, ensure_ascii=False)


def scene():
    text = nearcast("scene").stdout
    return text.replace("BT:Bar", json.dumps(NASTY, ensure_ascii=False)[1:-1])


FILES = {
    "heard.jsonl": heard(),
    "heard.truth.jsonl": line(at=0, truth=ADDRESS),
    "scenario.jsonl": scenario(),
    "operation.jsonl": line(do=NASTY),
    "field.jsonl": line(do="getRSSI", MACAddr="x", **{NASTY: 1}),
    "damaged.jsonl": heard() + "{" + NASTY,
    "truth.jsonl": line(at=0, truth=NASTY),
    "settings.json": settings(),
    "broken.json": '{"a": ' + NASTY,
    "scene.json": scene(),
    "member.json": json.dumps({NASTY: 1}, ensure_ascii=False),
    NASTY.replace("/", "") + ".jsonl": heard(),
    "no" + NASTY: None,
}
RADIOS = [f"{kind}:{name}?speed=max" for kind in ("replay", "simulator") for name in FILES]
RADIOS += [NASTY, "none", "simulator?" + NASTY, "replay:heard.jsonl?speed=" + NASTY, "simulator?speed=max"]
VALUES = {"FILE": list(FILES), "RADIO": RADIOS, "SECONDS": ["8", NASTY], None: [None], "any": ["any", NASTY],
          "dongles": ["dongles", NASTY], "KEY=VALUE": [NASTY, NASTY + "=1", "patience=" + NASTY]}
ORDINARY = {"FILE": "settings.json", "RADIO": "replay:heard.jsonl?speed=max", "SECONDS": "8", None: None}


def given(option, value):
    return [option.name] if value is None else [option.name + "=" + value]


def ordinary(command, *names):
    """What a command is always given, so that it ends soon; and what an option needs."""
    always = [option for option in command.options if option.type in ("RADIO", "SECONDS") and option.needs == []]
    needed = [command.option(name) for name in names]
    return [word for option in dict.fromkeys(always + needed) for word in given(option, ORDINARY[option.type])]


def calls(command):
    """Each file that the command can be given, and each value of each option, alone."""
    yield ordinary(command)
    yield ["--" + NASTY]
    for _ in command.positionals:
        for name in FILES:
            yield [name] + ordinary(command)
    first = ["heard.jsonl"] if command.positionals else []
    for option in command.options:
        rest = [word for word in ordinary(command, *option.needs) if not word.startswith(option.name + "=")]
        for value in VALUES.get(option.type, [NASTY]):
            yield first + given(option, value) + rest


def steers(character):
    kept = "\n\u200c"  # the line's end; and what Persian is written with
    return unicodedata.category(character) in ("Cc", "Cf", "Zl", "Zp") and character not in kept


class Printed(ProgramTest):
    def setUp(self):
        super().setUp()
        for name, content in FILES.items():
            if content is not None:
                self.write(name, content)

    def restore(self):
        """A call may have written to any of the files."""
        for name, content in FILES.items():
            path = self.folder / name
            if content is None:
                path.unlink(missing_ok=True)
            elif path.read_text(encoding="utf-8", errors="replace") != content:
                self.write(name, content)

    def assert_harmless(self, arguments):
        result = subprocess.run([PROGRAM, *arguments], cwd=self.folder, capture_output=True, timeout=DEADLINE,
                                stdin=subprocess.DEVNULL, check=False)
        for stream in (result.stdout, result.stderr):
            text = stream.decode("utf-8")  # which it has to be
            found = sorted({f"U+{ord(character):04X}" for character in text if steers(character)})
            self.assertEqual(found, [], f"{arguments}: {text[-300:]!r}")
        self.assertIn(result.returncode, (0, 1, 2, 3), arguments)

    def test_no_command_prints_what_steers_a_terminal(self):
        listed = commands()
        self.assertGreater(len(listed), 8)
        for command in listed:
            for arguments in calls(command):
                with self.subTest(command=command.name, arguments=arguments):
                    self.assert_harmless([command.name, *arguments])
                    self.restore()

    def test_a_command_that_is_none_is_said_without_steering_the_terminal(self):
        self.assert_harmless([NASTY])
        self.assert_harmless(["--" + NASTY])

    def test_json_keeps_the_names_that_it_escapes(self):
        result = subprocess.run([PROGRAM, "import", "heard.jsonl"], cwd=self.folder, capture_output=True, text=True,
                                timeout=DEADLINE, check=True)
        self.assertEqual(json.loads(result.stdout.split("\n")[0])["name"], NASTY)


class OnATerminal(ProgramTest):
    """The table of watch, which moves the cursor itself."""

    def table(self):
        path = self.write("heard.jsonl", heard())
        registered = self.write("settings.json", settings())
        leader, follower = pty.openpty()
        arguments = ["watch", "--radio", f"replay:{path}?speed=max", "--settings", str(registered), "--for", "3.5"]
        with subprocess.Popen([PROGRAM, *arguments], stdout=follower, stderr=follower,
                              stdin=subprocess.DEVNULL, env={**os.environ, "TERM": "xterm"}) as process:
            os.close(follower)
            output = b""
            while select.select([leader], [], [], DEADLINE)[0]:
                try:
                    part = os.read(leader, 1 << 16)
                except OSError:  # the other end is closed
                    break
                output += part
            process.wait(DEADLINE)
        os.close(leader)
        return output.decode("utf-8").replace("\r\n", "\n")

    def test_only_the_tables_own_moves_reach_it(self):
        text = re.sub("\x1b\\[\\d+A\x1b\\[J", "", self.table())
        self.assertEqual([character for character in text if steers(character)], [])

    def test_its_columns_stand_in_line(self):
        def width(text):
            return sum(2 if unicodedata.east_asian_width(character) in "WF" else 1 for character in text)
        places = {width(row.partition(" dBm")[0]) for row in self.table().split("\n") if " dBm" in row}
        self.assertEqual(len(places), 1, places)


if __name__ == "__main__":
    main()
