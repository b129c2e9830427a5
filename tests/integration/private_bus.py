# SPDX-License-Identifier: Apache-2.0
"""A message bus of the test's own, and on it a daemon that stands in for bluetoothd."""

import os
import pathlib
import subprocess

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path={folder}/bus</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*"/>
    {rules}
  </policy>
  <limit name="max_outgoing_bytes">134217728</limit>
</busconfig>
"""


class PrivateBus:
    """A dbus-daemon below `folder`. `rules` are policy elements, to forbid things."""

    def __init__(self, folder, rules=""):
        self.folder = pathlib.Path(folder)
        self.address = f"unix:path={self.folder}/bus"
        self.environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": self.address}
        (self.folder / "bus.conf").write_text(CONFIGURATION.format(folder=self.folder, rules=rules))
        self.start()

    def start(self):
        (self.folder / "bus").unlink(missing_ok=True)
        self.process = subprocess.Popen(
            ["dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", "--print-address"],
            stdout=subprocess.PIPE, text=True)
        if not self.process.stdout.readline():
            raise RuntimeError("dbus-daemon did not start")

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


class Bluezd:
    """The daemon, on a private bus."""

    def __init__(self, bus, *options):
        self.process = subprocess.Popen([os.environ["NEARCAST_BLUEZD"], *map(str, options)], env=bus.environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.said = []  # of monitors, whenever a client registers one
        line = self.process.stdout.readline()
        if line != "ready\n":
            raise RuntimeError(f"bluezd did not start: {line!r}")

    def ask(self, command):
        """Gives a command; what it answers."""
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        while True:
            line = self.process.stdout.readline().strip()
            if line.startswith(("RegisterMonitor", "UnregisterMonitor", "Monitor")):
                self.said.append(line)
                continue
            return line

    def kill(self):
        """As a crash ends it."""
        self.process.kill()
        self.close()

    def close(self):
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()


class OnABus:
    """What a test has that has a folder of its own, and in it a bus of its own."""

    def setUp(self):
        super().setUp()
        self.bus = PrivateBus(self.folder)
        self.addCleanup(self.bus.stop)

    def bluezd(self, *options):
        daemon = Bluezd(self.bus, *options)
        self.addCleanup(daemon.close)
        return daemon
