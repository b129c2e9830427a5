# SPDX-License-Identifier: Apache-2.0
"""What every command that listens does where there is nothing to listen with, and where that may change."""

import json
import os
import subprocess
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, commands, main
from private_bus import Bluezd, PrivateBus

FOREVER = 3600
DENIED = '<deny send_destination="org.bluez" send_interface="org.freedesktop.DBus.ObjectManager"/>'


def listening():
    """The commands that take a radio: a new one is found by itself."""
    found = [command for command in commands() if any(option.name == "--radio" for option in command.options)]
    assert len(found) >= 3, found
    return [command.name for command in found]


class WithoutRadio(ProgramTest):
    def bus(self, rules=""):
        bus = PrivateBus(self.folder, rules)
        self.addCleanup(bus.stop)
        return bus.environment, bus

    def no_bus(self):
        return {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/none"}

    def run_for(self, seconds, command, radio, environment, *more):
        begin = time.monotonic()
        result = subprocess.run([PROGRAM, command, "--radio", radio, "--for", str(seconds), *map(str, more)],
                                env=environment, capture_output=True, text=True, timeout=DEADLINE, check=False,
                                stdin=subprocess.DEVNULL)
        result.took = time.monotonic() - begin
        return result


class Missing(WithoutRadio):
    def assert_ends_at_once(self, radio, environment, reason):
        for command in listening():
            with self.subTest(command=command, radio=radio):
                result = self.run_for(FOREVER, command, radio, environment)
                text = result.stdout + result.stderr
                self.assertEqual(result.returncode, 1, text)
                self.assertEqual(text.count(reason), 1, text)
                self.assertIn("nearcast doctor", text)
                self.assertIn("--radio simulator", text)
                for contradiction in ("going on without one", "not supported", "cannot be started", "waiting"):
                    self.assertNotIn(contradiction, text)
                if command != "doctor":  # whose findings stand on standard output
                    self.assertEqual(result.stdout, "")
                    self.assertEqual(len(result.stderr.splitlines()), 1, text)

    def test_no_radio_ends_every_command_at_once(self):
        self.assert_ends_at_once("none", self.no_bus(), "there is no radio")

    def test_a_machine_without_any_ends_every_command_at_once(self):
        if os.path.isdir("/sys/class/bluetooth"):
            self.skipTest("this machine has Bluetooth")
        self.assert_ends_at_once("auto", self.no_bus(), "no controller with Low Energy")

    def test_bluetoothd_without_an_adapter_ends_every_command_at_once(self):
        environment, bus = self.bus()
        self.addCleanup(Bluezd(bus, "--absent").close)
        self.assert_ends_at_once("bluez", environment, "there is no Bluetooth adapter")

    def test_an_adapter_that_is_not_there_ends_every_command_at_once(self):
        environment, bus = self.bus()
        self.addCleanup(Bluezd(bus).close)
        self.assert_ends_at_once("bluez:hci5", environment, "there is no adapter hci5 (there is: hci0)")

    def test_a_bus_that_forbids_it_ends_every_command_at_once(self):
        environment, bus = self.bus(DENIED)
        self.addCleanup(Bluezd(bus).close)
        self.assert_ends_at_once("bluez", environment, "the bus forbids to talk to bluetoothd")

    def test_a_controller_that_is_not_there_or_not_ours_ends_every_command_at_once(self):
        for command in listening():
            with self.subTest(command):
                result = self.run_for(FOREVER, command, "hci:77", self.no_bus())
                self.assertEqual(result.returncode, 1, result.stdout + result.stderr)

    def test_nothing_is_written_over_where_nothing_can_be_recorded(self):
        path = self.write("kept.jsonl", "kept\n")
        self.assertEqual(self.run_for(FOREVER, "record", "none", self.no_bus(), "-o", path).returncode, 1)
        self.assertEqual(path.read_text(), "kept\n")

    def test_the_doctor_says_it_in_json_too(self):
        result = self.run_for(FOREVER, "doctor", "none", self.no_bus(), "--json")
        said = json.loads(result.stdout)
        self.assertEqual((said["status"], said["scan"]), (1, None))


class Awaited(WithoutRadio):
    def assert_waits(self, environment, reason, radio="bluez"):
        for command in listening():
            with self.subTest(command):
                result = self.run_for(1, command, radio, environment)
                text = result.stdout + result.stderr
                self.assertNotEqual(result.returncode, 0, text)
                self.assertGreaterEqual(result.took, 1, text)
                self.assertIn(reason, text)
                for contradiction in ("going on without one", "not supported", "cannot be started"):
                    self.assertNotIn(contradiction, text)
                if command != "doctor":
                    self.assertEqual(result.stderr.count(reason), 1, text)
                    self.assertRegex(result.stderr, f"^nearcast {command}: waiting for the radio: ")

    def test_an_adapter_that_is_off_is_waited_for(self):
        environment, bus = self.bus()
        self.addCleanup(Bluezd(bus, "--off").close)
        self.assert_waits(environment, "hci0 is switched off")

    def test_bluetoothd_is_waited_for(self):
        environment, _ = self.bus()
        self.assert_waits(environment, "bluetoothd does not run")

    def test_the_bus_itself_is_waited_for(self):
        for command in ("watch", "record"):  # to the doctor it is a fault, which he says in his own words
            result = self.run_for(1, command, "bluez", self.no_bus())
            self.assertGreaterEqual(result.took, 1)
            self.assertIn("waiting for the radio: there is no connection to the system bus", result.stderr)

    def test_a_recording_that_begins_switched_off_is_heard_from_where_it_is_on(self):
        lines = ['{"at": 0, "do": "radio", "state": 4}\n', '{"at": 4.0, "do": "radio", "state": 5}\n']
        line = '{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF020000000001", "RSSI": -60}\n'
        lines += [line % (at / 10) for at in range(41, 100)]
        path = self.write("off.jsonl", "".join(lines))
        result = self.run_for(20, "watch", f"replay:{path}?speed=max", self.no_bus(), "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        reports = [json.loads(one) for one in result.stdout.splitlines() if "didDiscoverPort" in one]
        self.assertGreater(len(reports), 40)
        self.assertGreaterEqual(min(report["at"] for report in reports), 4)

    def test_what_was_never_on_is_said_at_the_end(self):
        path = self.write("off.jsonl", '{"at": 0, "do": "radio", "state": 4}\n{"at": 5, "do": "end"}\n')
        result = self.run_for(3, "record", f"replay:{path}?speed=max", self.no_bus())
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, "nearcast record: nothing was heard: the radio is powered off\n")

    def coming(self, command, daemon, *more):
        """A command that waits while the radio comes."""
        environment, bus = self.bus()
        with subprocess.Popen([PROGRAM, command, "--radio", "bluez", *more], env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
            said = process.stderr.readline()
            self.assertIn("waiting for the radio", said)
            bluezd = Bluezd(bus, *daemon)
            self.addCleanup(bluezd.close)
            line = ""
            while "advertise" not in line and "didDiscoverPort" not in line:
                line = process.stdout.readline()
                self.assertTrue(line, "nothing was heard")
            process.terminate()
            process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0)

    def test_what_is_waited_for_is_heard_when_it_comes(self):
        for command, more in (("watch", ["--json"]), ("record", [])):
            with self.subTest(command):
                self.coming(command, ("--devices", 2, "--rate", 40), *more)


if __name__ == "__main__":
    main()
