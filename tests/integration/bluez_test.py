# SPDX-License-Identifier: Apache-2.0
"""The radio behind bluetoothd, on a private bus with a daemon that stands in for it."""

import json
import pathlib
import queue
import subprocess
import threading
import time

from nearcast_program import DEADLINE, PROGRAM, ProgramTest, main
from private_bus import Bluezd, PrivateBus

RECOVERY = 3  # seconds from the radio's return to the next report
TWO_DONGLES = ("--devices", 2, "--rate", 40)


class Watching:
    """A `nearcast watch` that runs, and its events as they come."""

    def __init__(self, bus, radio="bluez"):
        self.process = subprocess.Popen([PROGRAM, "watch", "--radio", radio, "--json"], env=bus.environment,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        self.lines = queue.Queue()
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            self.lines.put(json.loads(line))

    def report(self, within=DEADLINE):
        """The next report; None where none comes in time."""
        end = time.monotonic() + within
        while True:
            try:
                event = self.lines.get(timeout=max(0, end - time.monotonic()))
            except queue.Empty:
                return None
            if event["event"] == "didDiscoverPort":
                return event

    def wake_ups(self, seconds):
        """How often the radio's thread waits in so many seconds."""
        thread = next(path for path in pathlib.Path(f"/proc/{self.process.pid}/task").iterdir()
                      if (path / "comm").read_text() == "nearcast-bluez\n")

        def waits():
            lines = (thread / "status").read_text().splitlines()
            return next(int(line.split()[1]) for line in lines if line.startswith("voluntary_ctxt_switches:"))
        before = waits()
        time.sleep(seconds)
        return waits() - before

    def silence(self):
        """Waits until no report has come for half a second."""
        while self.report(within=0.5):
            pass

    def close(self):
        if self.process.stdout.closed:
            return
        self.process.terminate()
        status = self.process.wait(timeout=DEADLINE)
        self.reader.join()
        self.process.stdout.close()
        if status != 0:  # a sanitizer's finding has a status of its own
            raise AssertionError(f"nearcast watch has ended with {status}")


class BluezTest(ProgramTest):
    rules = ""

    def setUp(self):
        super().setUp()
        self.bus = PrivateBus(self.folder, self.rules)
        self.addCleanup(self.bus.stop)

    def daemon(self, *options):
        daemon = Bluezd(self.bus, *options)
        self.addCleanup(daemon.close)
        return daemon

    def watch(self, radio="bluez"):
        watching = Watching(self.bus, radio)
        self.addCleanup(watching.close)
        return watching

    def run_watch(self, *arguments):
        """A watch that ends by itself."""
        return subprocess.run([PROGRAM, "watch", *map(str, arguments)], env=self.bus.environment, capture_output=True,
                              text=True, timeout=DEADLINE, check=False)


class Hearing(BluezTest):
    def test_every_dongle_is_shown_by_its_address(self):
        self.daemon("--devices", 3, "--rate", 60)
        result = self.run_watch("--radio", "bluez", "--for", 2, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        reports = [event for event in map(json.loads, result.stdout.splitlines()) if "MACAddr" in event]
        self.assertEqual({report["MACAddr"] for report in reports},
                         {"02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03"})
        self.assertTrue(all(-80 <= report["RSSI"] <= -50 for report in reports))

    def test_in_quiet_air_the_radio_sleeps(self):
        self.daemon("--devices", 0)
        watching = self.watch()
        watching.lines.get(timeout=DEADLINE)
        time.sleep(0.5)
        self.assertLess(watching.wake_ups(1), 20)

    def test_reports_that_follow_each_other_closely_are_taken_together(self):
        self.daemon("--devices", 50, "--rate", 1000)
        watching = self.watch()
        self.assertTrue(watching.report())
        before = watching.lines.qsize()
        waits = watching.wake_ups(1)
        self.assertLess(waits, (watching.lines.qsize() - before) / 2)

    def test_a_monitor_is_registered_where_bluetoothd_takes_one(self):
        daemon = Bluezd(self.bus, "--monitors", *TWO_DONGLES)
        watching = Watching(self.bus)
        try:
            self.assertTrue(watching.report())
        finally:
            watching.close()
        said = daemon.process.communicate("quit\n", timeout=DEADLINE)[0]
        self.assertRegex(said, "(?m)^RegisterMonitor /org/nearcast/monitors :[0-9.]+$")
        # Manufacturer data (255) that begin, at octet 0, with the company FFFF.
        self.assertIn("Monitor type or_patterns\nMonitor pattern 0 255 FFFF\n", said)

    def test_a_monitor_is_released_by_bluetoothd_alone(self):
        daemon = self.daemon("--monitors", *TWO_DONGLES)
        other = self.daemon("--nameless", "--devices", 0)
        watching = self.watch()

        def registered():
            """The clients that have registered monitors, since the adapter was last switched off and on."""
            daemon.said.clear()
            daemon.ask("power off")
            watching.silence()
            daemon.ask("power on")
            self.assertTrue(watching.report(within=RECOVERY))
            daemon.ask("count")
            return [line.split()[2] for line in daemon.said if line.startswith("RegisterMonitor")]

        self.assertTrue(watching.report())
        daemon.ask("count")
        client = daemon.said[0].split()[2]
        monitor = next(line.split()[2] for line in daemon.said if line.startswith("Monitor path"))
        self.assertEqual(other.ask(f"release {client} {monitor}"), "org.freedesktop.DBus.Error.AccessDenied")
        self.assertEqual(registered(), [])
        self.assertEqual(daemon.ask(f"release {client} {monitor}"), "released")
        self.assertEqual(set(registered()), {client})

    def test_bluetoothd_is_found_where_no_radio_is_named(self):
        self.daemon(*TWO_DONGLES)
        result = self.run_watch("--for", 1, "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("02:00:00:00:00:01", result.stdout)

    def test_the_adapter_can_be_named(self):
        self.daemon(*TWO_DONGLES)
        self.assertTrue(self.watch("bluez:hci0").report())

    def test_messages_that_are_not_as_they_should_be_do_no_harm(self):
        daemon = self.daemon(*TWO_DONGLES)
        watching = self.watch()
        self.assertTrue(watching.report())
        self.assertEqual(daemon.ask("odd"), "done")
        for _ in range(20):
            self.assertTrue(watching.report(within=RECOVERY))
        self.assertIsNone(watching.process.poll())

    def test_signals_of_others_that_speak_in_bluetoothds_name_are_not_heard(self):
        self.daemon("--devices", 1, "--rate", 0)
        watching = self.watch()
        other = self.daemon("--nameless", "--devices", 1, "--rate", 40)
        self.assertIsNone(watching.report(within=1))
        self.assertGreater(int(other.ask("count").split()[1]), 20)
        self.assertIsNone(watching.process.poll())


class Forging(BluezTest):
    """Any local user may send a signal to somebody's connection alone, where no match rule keeps it away."""

    def setUp(self):
        super().setUp()
        self.daemon(*TWO_DONGLES)
        self.forger = self.daemon("--nameless", "--devices", 0)
        self.watching = self.watch()
        self.assertTrue(self.watching.report())

    def forge(self, what, times=1, seconds=1.0):
        """All events of the time after it."""
        while not self.watching.lines.empty():
            self.watching.lines.get()
        for _ in range(times):
            self.assertEqual(self.forger.ask(f"forge {what}"), "done")
        time.sleep(seconds)
        return [self.watching.lines.get() for _ in range(self.watching.lines.qsize())]

    def expect_no_effect(self, what, times=1):
        events = self.forge(what, times)
        reports = [event for event in events if event["event"] == "didDiscoverPort"]
        self.assertGreater(len(reports), 20)
        self.assertEqual({event["MACAddr"] for event in reports}, {"02:00:00:00:00:01", "02:00:00:00:00:02"})
        states = {event["state"] for event in events if event["event"] == "radioHealth"}
        self.assertLessEqual(states, {5}, events)
        self.assertLessEqual({event["restarts"] for event in events if event["event"] == "radioHealth"}, {0})

    def test_a_forged_report_is_not_told(self):
        self.expect_no_effect("report", times=30)  # more than the smoothing of a new dongle waits for

    def test_a_forged_loss_of_power_has_no_effect(self):
        self.expect_no_effect("power")

    def test_a_forged_removal_of_the_adapter_has_no_effect(self):
        self.expect_no_effect("removal")

    def test_a_forged_change_of_the_owner_has_no_effect(self):
        self.expect_no_effect("owner")

    def test_it_is_said_once_on_the_console_and_by_the_doctor(self):
        doctor = subprocess.Popen([PROGRAM, "doctor", "--radio", "bluez", "--for", "3"], env=self.bus.environment,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        while not doctor.stdout.readline().startswith("Listening"):
            self.assertIsNone(doctor.poll())
        time.sleep(1)
        self.forge("report", seconds=0)
        self.forge("power", seconds=0)
        said, complained = doctor.communicate(timeout=DEADLINE)
        self.assertEqual(complained.count("speaks in bluetoothd's name"), 1, complained)
        self.assertRegex(said, r"scan +remark +2 messages in bluetoothd's name came from another program")
        self.assertEqual(doctor.returncode, 3)


class Ending(BluezTest):
    def test_as_bluetoothd_goes(self):
        for _ in range(5):
            bluezd = Bluezd(self.bus, *TWO_DONGLES)
            watching = self.watch()
            self.assertTrue(watching.report())
            bluezd.process.kill()
            watching.close()
            bluezd.kill()


class Failing(BluezTest):
    def test_without_bluetoothd_it_fails_in_words(self):
        result = self.run_watch("--radio", "bluez", "--for", 1)
        self.assertEqual(result.returncode, 1)
        self.assertIn("waiting for the radio: bluetoothd does not run", result.stderr)
        self.assertIn("nothing was heard: the radio did not come", result.stderr)

    def test_without_an_adapter_it_fails(self):
        self.daemon("--absent")
        self.assertEqual(self.run_watch("--radio", "bluez", "--for", 1).returncode, 1)

    def test_without_the_adapter_that_is_wanted_it_fails(self):
        self.daemon()
        self.assertEqual(self.run_watch("--radio", "bluez:hci5", "--for", 1).returncode, 1)

    def test_with_an_adapter_that_is_off_it_fails(self):
        self.daemon("--off")
        self.assertEqual(self.run_watch("--radio", "bluez", "--for", 1).returncode, 1)

    def test_without_a_bus_it_fails(self):
        self.bus.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/none"
        self.assertEqual(self.run_watch("--radio", "bluez", "--for", 1).returncode, 1)

    def test_what_is_no_adapter_is_an_error_of_the_command_line(self):
        result = self.run_watch("--radio", "bluez:0")
        self.assertEqual(result.returncode, 2)
        self.assertIn("'0' is not an adapter, as in bluez:hci0", result.stderr)


class Forbidden(BluezTest):
    rules = '<deny send_destination="org.bluez" send_interface="org.freedesktop.DBus.ObjectManager"/>'

    def test_where_the_policy_forbids_it_it_fails(self):
        self.daemon()
        self.assertEqual(self.run_watch("--radio", "bluez", "--for", 1).returncode, 1)


class Recovering(BluezTest):
    def setUp(self):
        super().setUp()
        self.bluezd = Bluezd(self.bus, *TWO_DONGLES)
        self.watching = self.watch()
        self.assertTrue(self.watching.report(), "nothing is heard from the start")

    def tearDown(self):
        self.bluezd.close()
        super().tearDown()

    def expect_recovery(self):
        begin = time.monotonic()
        self.assertTrue(self.watching.report(within=RECOVERY), f"nothing is heard for {RECOVERY} s after the return")
        print(f"heard again after {time.monotonic() - begin:.2f} s")

    def test_after_power_off_and_on(self):
        self.bluezd.ask("power off")
        self.watching.silence()
        self.bluezd.ask("power on")
        self.expect_recovery()

    def test_after_the_adapter_was_unplugged_and_plugged_in(self):
        self.bluezd.ask("unplug")
        self.watching.silence()
        self.bluezd.ask("plug")
        self.expect_recovery()

    def test_after_bluetoothd_was_killed_and_started(self):
        self.bluezd.kill()
        self.watching.silence()
        self.bluezd = Bluezd(self.bus, *TWO_DONGLES)
        self.expect_recovery()

    def test_after_another_client_has_ended_the_discovery(self):
        self.bluezd.ask("lose")
        self.watching.silence()
        self.expect_recovery()

    def test_after_a_first_try_that_fails(self):
        self.bluezd.ask("power off")
        self.watching.silence()
        self.bluezd.ask("fail StartDiscovery org.bluez.Error.InProgress")
        self.bluezd.ask("power on")
        self.expect_recovery()

    def test_after_the_bus_itself_was_restarted(self):
        self.bus.stop()
        self.bluezd.kill()
        self.watching.silence()
        self.bus.start()
        self.bluezd = Bluezd(self.bus, *TWO_DONGLES)
        self.expect_recovery()


if __name__ == "__main__":
    main()
