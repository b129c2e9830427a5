# SPDX-License-Identifier: Apache-2.0
"""What docs/radios.md says that the doctor prints, it prints."""

import pathlib
import re
import subprocess

from nearcast_program import PROGRAM, ProgramTest, main, nearcast
from private_bus import OnABus

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "radios.md"
LEVELS = ("ok", "note", "remark", "FAULT")


def quoted():
    """Of each heading the lines of findings that stand below it."""
    found, heading, inside = {}, None, False
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("```"):
            inside = not inside
        elif not inside and line.startswith("#"):
            heading = line.lstrip("# ")
        elif inside and (line[14:22].strip() in LEVELS or line.startswith(" " * 22 + "->")):
            found.setdefault(heading, []).append(line)
    return found


def pattern(line):
    """The line with any figures, addresses and numbers of adapters."""
    text = re.escape(line)
    text = re.sub(r"[0-9A-F]{2}(:[0-9A-F]{2}){5}", "[0-9A-F:]{17}", text)
    return re.compile("^" + re.sub(r"\d+\\\.\d+", r"\\d+\\.\\d+", text) + "$", re.MULTILINE)


class Symptoms(OnABus, ProgramTest):
    def doctor(self, seconds, **environment):
        return nearcast("doctor", "--radio", "bluez", "--for", seconds,
                        env={**self.bus.environment, **environment}).stdout

    def kept_back(self):
        self.bluezd("--devices", 3, "--rate", 0.4)
        return self.doctor(6)

    def silent(self):
        self.bluezd("--devices", 0)
        return self.doctor(2)

    def another(self):
        self.bluezd("--devices", 1)
        with subprocess.Popen([PROGRAM, "record", "--radio", "bluez", "-o", self.folder / "other.jsonl"],
                              env=self.bus.environment, stderr=subprocess.DEVNULL) as other:
            while not (self.folder / "other.jsonl").exists() or not (self.folder / "other.jsonl").stat().st_size:
                self.assertIsNone(other.poll())
            output = self.doctor(1)
            other.terminate()
        return output

    def gap(self):
        daemon = self.bluezd("--devices", 1, "--rate", 40)
        with subprocess.Popen([PROGRAM, "doctor", "--radio", "bluez", "--for", "7"], env=self.bus.environment,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as doctor:
            while int(daemon.ask("count").split()[1]) < 10:
                self.assertIsNone(doctor.poll())
            daemon.ask("mute")
            return doctor.communicate()[0]

    def sandbox(self):
        return self.doctor(1, DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={self.folder}/none")


CASES = {
    "Start bluetoothd with `-E`": Symptoms.silent,
    "All dongles keep falling silent, each for about ten seconds": Symptoms.kept_back,
    "Nothing is heard, though the adapter is on": Symptoms.silent,
    "Dongles vanish while another program uses Bluetooth": Symptoms.another,
    "Dongles that are near have long gaps, or weak and restless signals": Symptoms.gap,
    "In a container or a sandbox nothing is found": Symptoms.sandbox,
}


def agreement(heading, bring_about):
    def test(self):
        output = bring_about(self)
        for line in quoted()[heading]:
            self.assertRegex(output, pattern(line))

    return test


class Completeness(ProgramTest):
    def test_each_heading_with_findings_has_a_case(self):
        self.assertEqual(set(quoted()), set(CASES))


for each, bring in CASES.items():
    setattr(Symptoms, "test_" + re.sub(r"\W+", "_", each).strip("_").lower(), agreement(each, bring))


if __name__ == "__main__":
    main()
