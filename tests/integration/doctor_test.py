# SPDX-License-Identifier: Apache-2.0
"""nearcast doctor and radios as a person uses them: on this machine, and with a bus of their own."""

import json
import os

from nearcast_program import ProgramTest, main, nearcast
from private_bus import Bluezd, PrivateBus

SHOP = "simulator?speed=max"


class OnTheBus(ProgramTest):
    """What is said of bluetoothd; whether this machine has Bluetooth does not matter."""

    def bus(self, rules=""):
        bus = PrivateBus(self.folder, rules)
        self.addCleanup(bus.stop)
        return bus

    def bluezd(self, bus, *options):
        self.addCleanup(Bluezd(bus, *options).close)

    def entry(self, radio, environment):
        result = nearcast("radios", "--json", env=environment)
        self.assertEqual(result.returncode, 0, result.stderr)
        return {one["radio"]: one for one in json.loads(result.stdout)}.get(radio)

    def test_no_bus(self):
        bluez = self.entry("bluez", {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/none"})
        self.assertIs(bluez["opens"], False)
        self.assertIn("the system bus cannot be reached", bluez["about"])

    def test_a_bus_without_bluetoothd(self):
        self.assertIn("bluetoothd does not run", self.entry("bluez", self.bus().environment)["about"])

    def test_bluetoothd_without_an_adapter(self):
        bus = self.bus()
        self.bluezd(bus, "--absent")
        self.assertIsNone(self.entry("bluez:hci0", bus.environment))

    def test_an_adapter_that_is_powered_on_opens_and_auto_takes_bluez(self):
        bus = self.bus()
        self.bluezd(bus)
        self.assertIs(self.entry("bluez:hci0", bus.environment)["opens"], True)
        self.assertIn("takes bluez", self.entry("auto", bus.environment)["about"])

    def test_an_adapter_that_is_off_does_not_open(self):
        bus = self.bus()
        self.bluezd(bus, "--off")
        adapter = self.entry("bluez:hci0", bus.environment)
        self.assertIs(adapter["opens"], False)
        self.assertIn("powered off", adapter["about"])
        self.assertIn("power on", adapter["advice"])

    def test_a_policy_that_forbids(self):
        bus = self.bus('<deny send_destination="org.bluez"/>')
        self.bluezd(bus)
        bluez = self.entry("bluez", bus.environment)
        self.assertIn("the bus policy forbids", bluez["about"])
        self.assertIn("org.freedesktop.DBus.Error.AccessDenied", bluez["about"])


class Doctor(ProgramTest):
    def test_a_scan_that_works_ends_with_0_and_shows_each_dongle(self):
        result = nearcast("doctor", "--radio", f"replay:{self.shop(20)}?speed=max")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertRegex(result.stdout, r"(?m)^02:00:00:00:00:01 +\d+ +10\.\d +100% +100% +0% +-60 dBm +0\.1 s$")
        self.assertTrue(result.stdout.endswith("\nThe scan works.\n"))

    def test_a_scan_with_remarks_ends_with_3(self):
        result = nearcast("doctor", "--radio", SHOP)
        self.assertEqual(result.returncode, 3, result.stderr)
        self.assertRegex(result.stdout, r"scan +remark +02:4E:43:00:00:06 was not heard for")

    def test_without_a_radio_it_ends_with_1_at_once_and_says_what_is_missing(self):
        result = nearcast("doctor", "--radio", "none", "--for", 3600)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, r"scan +FAULT +not tried: there is no radio")
        self.assertTrue(result.stdout.endswith("\nThere is no working scan.\n"))

    def test_settings_are_checked_before_the_scan(self):
        good = self.write("good.json", '{"BT:Bar": {"MAC Address": "02:00:00:00:00:01"}}')
        odd = self.write("odd.json", '{"BT:Bar": {"MAC Address": "02:00:00:00:00:0a", "Threshold RSSI": 30}}')
        radio = f"replay:{self.shop(20)}?speed=max"
        result = nearcast("doctor", "--radio", radio, "--settings", good)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertRegex(result.stdout, r"settings +ok +\S+good.json: 1 device\n")
        result = nearcast("doctor", "--radio", radio, "--settings", odd)
        self.assertNotEqual(result.returncode, 0)
        self.assertRegex(result.stdout, r'settings +remark +\S+odd.json: "BT:Bar": MAC Address "02:00:00:00:00:0a" matches')
        self.assertRegex(result.stdout, r'settings +remark +\S+odd.json: "BT:Bar": Threshold RSSI is outside')
        self.assertTrue(result.stdout.endswith("\nThe scan works; see the remarks.\n"))

    def test_settings_that_are_broken_end_it_before_anything_is_said(self):
        result = nearcast("doctor", "--radio", SHOP, "--settings", self.write("broken.json", "{"))
        self.assertEqual(result.returncode, 2)
        self.assertEqual(result.stdout, "")
        self.assertIn("broken.json: not JSON at line 1, column 2: ", result.stderr)

    def test_json_is_one_object_with_the_exit_status(self):
        result = nearcast("doctor", "--radio", SHOP, "--json", "--for", 3)
        said = json.loads(result.stdout)
        self.assertEqual((said["status"], said["verdict"]), (result.returncode, "well"))
        self.assertEqual(said["radio"], SHOP)
        self.assertEqual(said["scan"]["seconds"], 3)
        self.assertGreaterEqual(len(said["scan"]["dongles"]), 5)

    def test_a_radio_that_is_unknown_is_an_error_of_the_command_line(self):
        result = nearcast("doctor", "--radio", "carrier-pigeon")
        self.assertEqual(result.returncode, 2)
        self.assertIn("there is no radio 'carrier-pigeon'", result.stderr)

    def test_a_recording_that_is_missing_is_no_finding(self):
        result = nearcast("doctor", "--radio", f"replay:{self.folder}/none.jsonl")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, f"nearcast doctor: {self.folder}/none.jsonl: No such file or directory\n")

    def test_a_recording_that_is_damaged_is_told_once_and_fails(self):
        shop = self.shop(20)
        shop.write_text(shop.read_text(encoding="utf-8") + "{", encoding="utf-8")
        result = nearcast("doctor", "--radio", f"replay:{shop}?speed=max", "--for", 60)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.count("damaged at byte"), 1, result.stderr)
        self.assertIn("The scan works.", result.stdout)

    def shop(self, seconds):
        """A recording of a dongle that says its address ten times a second."""
        line = '{"at": %.1f, "do": "advertise", "manufacturerData": "FFFF020000000001", "RSSI": -60}\n'
        return self.write("shop.jsonl", "".join(line % (at / 10) for at in range(10 * seconds)))


if __name__ == "__main__":
    main()
