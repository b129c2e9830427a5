# SPDX-License-Identifier: Apache-2.0
"""nearcast doctor, record and watch by bluetoothd's stand-in, on a bus of their own."""

import json
import subprocess
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, events, main, nearcast
from private_bus import OnABus


class ByBluez(OnABus, ProgramTest):
    def test_the_doctor_finds_a_scan_that_works(self):
        self.bluezd("--devices", 4, "--rate", 40)
        result = nearcast("doctor", "--radio", "bluez", "--for", 2, "--json", env=self.bus.environment)
        said = json.loads(result.stdout)
        self.assertEqual((result.returncode, said["status"]), (0, 0), result.stdout)
        self.assertEqual(len(said["scan"]["dongles"]), 4)
        for dongle in said["scan"]["dongles"]:
            self.assertEqual(dongle["services"], dongle["reports"])
            self.assertGreater(dongle["reportsPerSecond"], 5)

    def test_the_doctor_says_that_the_adapter_is_off(self):
        self.bluezd("--off")
        result = nearcast("doctor", "--radio", "bluez", "--for", 0.5, env=self.bus.environment)
        self.assertEqual(result.returncode, 3)
        self.assertRegex(result.stdout, r"power +FAULT +hci0 .* is powered off\n +-> bluetoothctl power on")

    def test_a_recording_keeps_the_senders_and_the_changes_of_state(self):
        daemon = self.bluezd("--devices", 2, "--rate", 100)
        path = self.folder / "shop.btsnoop"
        with subprocess.Popen([PROGRAM, "record", "--radio", "bluez", "--for", "3", "-o", path],
                              env=self.bus.environment, stderr=subprocess.PIPE, text=True) as process:
            while not path.exists() or path.stat().st_size < 1000:
                self.assertIsNone(process.poll())
            daemon.ask("power off")
            process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0)
        lines = [json.loads(line) for line in nearcast("import", path, "--as", "dongles").stdout.splitlines()]
        self.assertIn(4, [line.get("state") for line in lines])
        self.assertEqual(len({line["manufacturerData"] for line in lines if line["do"] == "advertise"}), 2)

    def test_nothing_of_a_flood_is_lost(self):
        daemon = self.bluezd("--devices", 50, "--flood")
        path = self.folder / "flood.jsonl"
        with subprocess.Popen([PROGRAM, "record", "--radio", "bluez", "-o", path], env=self.bus.environment,
                              stderr=subprocess.PIPE, text=True) as process:
            while int(daemon.ask("count").split()[1]) < 5000:
                self.assertIsNone(process.poll())
            daemon.ask("mute")
            sent, heard, end = int(daemon.ask("count").split()[1]), 0, time.monotonic() + DEADLINE
            while heard < sent and time.monotonic() < end:
                time.sleep(0.05)
                heard = path.read_text().count('"advertise"')
            process.terminate()
            process.communicate(timeout=DEADLINE)
        self.assertEqual(heard, sent)

    def test_watch_tells_that_the_radio_went_blind(self):
        daemon = self.bluezd("--devices", 2, "--rate", 100)
        with subprocess.Popen([PROGRAM, "watch", "--radio", "bluez", "--for", "3", "--json"],
                              env=self.bus.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              text=True) as process:
            before = ""
            while "didDiscoverPort" not in before:
                before += process.stdout.readline()
            daemon.ask("power off")
            after, _ = process.communicate(timeout=DEADLINE)
        states = [event["state"] for event in events(before + after, "radioHealth")]
        self.assertEqual(states[-1], 4)
        self.assertTrue(events(after, "radioHealth")[-1]["why"])


if __name__ == "__main__":
    main()
