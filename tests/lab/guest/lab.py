# SPDX-License-Identifier: Apache-2.0
"""The bench of a test: controllers, the real bluetoothd, our programs, and the hands that disturb them."""

import glob
import os
import pathlib
import shutil
import subprocess
import time

import dbus

from framework import Failure, expect, wait_for
from other_client import OtherClient
from processes import Controller, Diary, Listener, Process
from service_root import ServiceRoot

NOBODY = 65534
GROUPS = pathlib.Path("/etc/group")
BUS = pathlib.Path("/run/dbus/system_bus_socket")
WORK = pathlib.Path("/run/lab")
POLICY = pathlib.Path("/etc/dbus-1/system.d/bluetooth.conf")
POLICIES = (POLICY, pathlib.Path("/usr/share/dbus-1/system.d/bluetooth.conf"))
SETTINGS = pathlib.Path("/etc/bluetooth/main.conf")

bus_daemon = None


def start_bus(config):
    """The system bus, with the policy that Debian ships for bluetoothd."""
    root = ServiceRoot(config)
    for file, places in ((POLICY, POLICIES), (SETTINGS, (SETTINGS,))):
        file.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(root.find(*places), file)
    root.enter()
    if not any(line.startswith("bluetooth:") for line in GROUPS.read_text().splitlines()):
        GROUPS.write_text(GROUPS.read_text() + "bluetooth:x:997:\n")  # as the package's installation does
    WORK.mkdir(exist_ok=True)
    WORK.chmod(0o755)
    launch_bus()


def launch_bus():
    global bus_daemon
    BUS.unlink(missing_ok=True)
    with open(WORK / "bus.log", "ab") as log:
        bus_daemon = subprocess.Popen(["dbus-daemon", "--system", "--nofork", "--nopidfile"], stdout=log, stderr=log)
    wait_for("the system bus", 10, BUS.exists)


class Lab:
    """One test's own; `close` takes all of it down again."""

    def __init__(self, config, name, figure):
        self.config = config
        self.name = name
        self.figure = figure
        self.logs = WORK / name
        self.logs.mkdir()
        self.processes = []
        self.bluetoothd_process = None
        self.undo = []

    def add(self, kind, name, *arguments, **options):
        number = len(list(self.logs.glob(f"{name}*.log"))) + 1
        process = kind(self.logs / f"{name}{number}.log", *arguments, **options)
        self.processes.append(process)
        return process

    # What there is to hear.

    def controller(self, *words, plugged=True):
        controller = self.add(Controller, "controller", self.config["programs"]["controller"])
        if plugged:
            controller.plug(*words)
        return controller

    # The real service.

    def bluetoothd(self, *options, adapters=("hci0",)):
        """Starts it, and waits until these adapters are powered."""
        shutil.rmtree("/var/lib/bluetooth", ignore_errors=True)
        return self.start_bluetoothd(*options, adapters=adapters)

    def start_bluetoothd(self, *options, adapters=("hci0",)):
        command = ServiceRoot(self.config).command("/usr/libexec/bluetooth/bluetoothd", "-n", *options)
        self.bluetoothd_process = self.add(Process, "bluetoothd", command)
        wait_for("bluetoothd on the bus", 20, self.bluetoothd_owned)
        for adapter in adapters:
            self.wait_powered(adapter)
        return self.bluetoothd_process

    @staticmethod
    def bus():
        return dbus.SystemBus(private=True)

    def bluetoothd_owned(self):
        bus = self.bus()
        try:
            return bus.name_has_owner("org.bluez")
        finally:
            bus.close()

    def adapter(self, adapter="hci0"):
        """The adapter's properties; nothing while it is not on the bus."""
        bus = self.bus()
        try:
            proxy = bus.get_object("org.bluez", f"/org/bluez/{adapter}", introspect=False)
            return proxy.GetAll("org.bluez.Adapter1", dbus_interface="org.freedesktop.DBus.Properties", timeout=5)
        except dbus.DBusException:
            return None
        finally:
            bus.close()

    def devices(self, adapter="hci0"):
        """What bluetoothd knows of the air: address, properties."""
        bus = self.bus()
        try:
            proxy = bus.get_object("org.bluez", "/", introspect=False)
            objects = proxy.GetManagedObjects(dbus_interface="org.freedesktop.DBus.ObjectManager", timeout=10)
        finally:
            bus.close()
        devices = [interfaces["org.bluez.Device1"] for path, interfaces in objects.items()
                   if path.startswith(f"/org/bluez/{adapter}/") and "org.bluez.Device1" in interfaces]
        return {str(device["Address"]): device for device in devices}

    def wait_powered(self, adapter="hci0", powered=True):
        def is_so():
            properties = self.adapter(adapter)
            return properties is not None and bool(properties["Powered"]) == powered

        wait_for(f"{adapter} {'powered' if powered else 'off'}", 20, is_so)

    def set_powered(self, powered, adapter="hci0"):
        bus = self.bus()
        try:
            proxy = bus.get_object("org.bluez", f"/org/bluez/{adapter}", introspect=False)
            proxy.Set("org.bluez.Adapter1", "Powered", dbus.Boolean(powered, variant_level=1),
                      dbus_interface="org.freedesktop.DBus.Properties", timeout=10)
        finally:
            bus.close()
        self.wait_powered(adapter, powered)

    # Ours.

    def listen(self, radio, services="dongles", user=None, program=None, capabilities=()):
        """As root, or as a user with these capabilities alone."""
        command = [program or self.config["programs"]["listener"], radio, services]
        return self.add(Listener, "listener", command, user=user, capabilities=capabilities)

    def other_client(self, adapter="hci0"):
        client = OtherClient(adapter)
        self.undo.append(client.close)
        return client

    def proximity(self, radio, user=None):
        return self.add(Diary, "proximity", [self.config["programs"]["proximity"], radio], user=user)

    def nearcast(self, *arguments, user=None, seconds=60):
        """Runs the command line to its end."""
        options = {"user": user, "group": user, "extra_groups": []} if user is not None else {}
        return subprocess.run([self.config["programs"]["nearcast"], *arguments], capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, timeout=seconds, check=False, **options)

    # What disturbs.

    def block(self, blocked):
        """The switch of `rfkill block bluetooth`, thrown for every adapter."""
        switches = [path for path in glob.glob("/sys/class/rfkill/*")
                    if pathlib.Path(path, "type").read_text().strip() == "bluetooth"]
        expect(switches, "there is no rfkill switch")
        for switch in switches:
            pathlib.Path(switch, "soft").write_text("1" if blocked else "0")
        if blocked:
            self.undo.append(lambda: self.block(False) if glob.glob("/sys/class/rfkill/*") else None)

    def forbid(self):
        """A bus policy that lets nobody but root speak to bluetoothd."""
        text = POLICY.read_text()
        self.undo.append(lambda: self.policy(text))
        self.policy(text.replace('<policy context="default">\n    <allow send_destination="org.bluez"/>',
                                 '<policy context="default">\n    <deny send_destination="org.bluez"/>'))
        expect(POLICY.read_text() != text, "Debian's policy does not read as it did")

    @staticmethod
    def freeze(seconds):
        """Everything that a suspension of the machine does but the switching off of its devices, which this machine's
        files would not survive: Bluetooth is told, and all programs stand still."""
        pathlib.Path("/sys/module/suspend/parameters/pm_test_delay").write_text(str(seconds))
        pathlib.Path("/sys/power/pm_test").write_text("freezer")
        pathlib.Path("/sys/power/state").write_text("freeze")

    @staticmethod
    def restart_bus():
        """Everybody's connection is lost."""
        bus_daemon.kill()
        bus_daemon.wait()
        launch_bus()

    def policy(self, text):
        POLICY.write_text(text)
        bus = self.bus()
        try:
            proxy = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False)
            proxy.ReloadConfig(dbus_interface="org.freedesktop.DBus")
        finally:
            bus.close()

    # The end.

    def close(self, keep_logs):
        for undo in reversed(self.undo):
            undo()
        for process in reversed(self.processes):
            process.close()
        if keep_logs:
            with open(self.logs / "kernel.log", "wb") as log:
                subprocess.run(["dmesg"], stdout=log, check=False)
            shutil.copy(WORK / "bus.log", self.logs)
            shutil.copytree(self.logs, pathlib.Path("/run/results/logs", self.name), dirs_exist_ok=True)
        shutil.rmtree(self.logs)
        try:
            wait_for("bluetoothd off the bus", 5, lambda: not self.bluetoothd_owned())
            wait_for("the controllers away", 5, lambda: not glob.glob("/sys/class/bluetooth/hci*"))
        except Failure as failure:
            print(f"{self.name}: {failure}", flush=True)


def sleep(seconds):
    time.sleep(seconds)
