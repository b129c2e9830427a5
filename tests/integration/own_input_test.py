# SPDX-License-Identifier: Apache-2.0
"""No command writes over a file that it reads, under whatever name the file is given again."""

import json
import os
import subprocess

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main, nearcast

ADDRESS = "02:4E:43:00:00:01"
OUTPUTS = {"--output", "--html", "--write"}
INPUTS = {"--settings", "--truth"}
OWN = {("evaluate", "--write", "--settings")}  # edits its own file

RECORDING = "".join(json.dumps({"at": step / 5, "do": "advertise", "manufacturerData": "FFFF024E43000001",
                                "RSSI": -50 if step < 100 else -80}) + "\n" for step in range(200))
TRUTH = json.dumps({"at": 0, "truth": ADDRESS}) + "\n" + json.dumps({"at": 20, "truth": None}) + "\n"
SETTINGS = json.dumps({"BT:Bar": {"Device Type": "Printer", "MAC Address": ADDRESS, "Nick Name": "Bar"}})


class OwnInput(ProgramTest):
    def setUp(self):
        super().setUp()
        self.files = {"positional": RECORDING, "--radio": RECORDING, "--truth": TRUTH, "--settings": SETTINGS}
        self.paths = {}
        for number, (role, content) in enumerate(self.files.items()):
            self.paths[role] = self.write(f"file{number}.jsonl", content)

    def words(self, command, role, output):
        """A call of the command that reads the file of this role, and writes to this output where it has one."""
        options = {option.name: option for option in command.options}
        words = [str(self.paths["positional"])] if command.positionals else []
        if command.name == "scene":
            words = [str(self.write("scene.json", nearcast("scene").stdout))]
        if "--radio" in options:
            words += ["--radio", f"replay:{self.paths['--radio']}?speed=max"]
        needed = {role, *(options[output].needs if output else ())}
        for name in sorted(needed & set(options) - {"--radio"}):
            words += [name] + ([str(self.paths[name])] if options[name].type == "FILE" else [])
        if command.name == "evaluate" and role != "--truth":
            words += ["--truth", str(self.paths["--truth"])]
        return [command.name, *words]

    def cases(self, outputs):
        for command in commands():
            options = {option.name for option in command.options}
            unknown = {option.name for option in command.options if option.type == "FILE"} - OUTPUTS - INPUTS
            self.assertEqual(unknown, set(), f"{command.name}: does it read or write them?")
            roles = (["positional"] if command.positionals else []) + sorted(options & {"--radio", *INPUTS})
            if command.name == "scene":
                roles = []  # where --settings is no file
            for role in roles:
                for output in outputs(options):
                    if (command.name, output, role) not in OWN:
                        yield command, role, output

    def names_of(self, path):
        """The file itself, and other names for it."""
        symbolic, hard = self.folder / "symbolic", self.folder / "hard"
        for link in (symbolic, hard):
            link.unlink(missing_ok=True)
        symbolic.symlink_to(path.name)
        os.link(path, hard)
        return path, symbolic, hard

    def assert_left_alone(self, role, result):
        self.assertEqual(result.returncode, 2, result.stderr)
        self.assertIn("written over", result.stderr)
        self.assertEqual(self.paths[role].read_text(encoding="utf-8"), self.files[role])

    def test_no_output_option_takes_a_file_that_is_read(self):
        seen = 0
        for command, role, output in self.cases(lambda options: sorted(options & OUTPUTS)):
            for name in self.names_of(self.paths[role]):
                with self.subTest(command=command.name, role=role, output=output, name=name.name):
                    self.assert_left_alone(role, nearcast(*self.words(command, role, output), output, name))
                    seen += 1
        self.assertGreater(seen, 20)

    def test_standard_output_is_not_appended_to_a_file_that_is_read(self):
        seen = 0
        for command, role, _ in self.cases(lambda options: [None]):
            with self.subTest(command=command.name, role=role), open(self.paths[role], "ab") as end:
                result = subprocess.run([PROGRAM, *self.words(command, role, None)], stdin=subprocess.DEVNULL,
                                        stdout=end, stderr=subprocess.PIPE, text=True, timeout=DEADLINE, check=False)
                self.assert_left_alone(role, result)
                seen += 1
        self.assertGreater(seen, 8)

    def test_a_scenario_from_standard_input_is_not_appended_to(self):
        path = self.paths["positional"]
        with open(path, "rb") as source, open(path, "ab") as end:
            result = subprocess.run([PROGRAM, "run", "-"], stdin=source, stdout=end, stderr=subprocess.PIPE, text=True,
                                    timeout=DEADLINE, check=False)
        self.assert_left_alone("positional", result)

    def test_a_scene_is_not_appended_to(self):
        path = self.write("scene.json", nearcast("scene").stdout)
        before = path.read_text(encoding="utf-8")
        with open(path, "ab") as end:
            result = subprocess.run([PROGRAM, "scene", "--settings", path], stdout=end, stderr=subprocess.PIPE,
                                    text=True, timeout=DEADLINE, check=False)
        self.assertEqual((result.returncode, path.read_text(encoding="utf-8")), (2, before))

    def test_proposed_thresholds_may_be_written_into_their_settings(self):
        path = self.paths["--settings"]
        result = nearcast("evaluate", "--advise", self.paths["positional"], "--truth", self.paths["--truth"],
                          "--settings", path, "--write", path)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("BT:Bar", json.loads(path.read_text(encoding="utf-8")))


if __name__ == "__main__":
    main()
