# SPDX-License-Identifier: Apache-2.0
"""What happens to a radio in a shop. A fault is one function: it does its harm and takes it back, and what it returns from
is the moment from which nothing stands in the radio's way."""

from dataclasses import dataclass
from typing import Callable, Optional

from framework import now, wait_for
from lab import sleep
from raw_hci import send_command

HEALED = 3.0  # seconds
FLOOD, FLOODERS = 5000, 10  # advertisements a second, of so many senders
SET_SCAN_ENABLE = 0x200C


@dataclass
class Fault:
    key: str
    words: str
    strike: Callable
    needs: str  # `daemon` where it strikes bluetoothd, else nothing
    limit: float  # seconds that a radio may be deaf after it
    without: Optional[float]  # the same for a radio that lacks CAP_NET_ADMIN; nothing: it may be deaf for good


FAULTS = []


def fault(key, words, needs="", limit=HEALED, without=HEALED):
    """Registers a fault."""

    def register(function):
        FAULTS.append(Fault(key, words, function, needs, limit, without))
        return function

    return register


class Scene:
    """A controller and, where somebody is to listen through it, bluetoothd."""

    def __init__(self, lab, options=(), daemon=True):
        self.lab = lab
        self.options = options
        self.daemon = daemon
        self.controller = lab.controller()
        if daemon:
            lab.bluetoothd(*options)

    def strike(self, fault_):
        """Lets it happen. Gives the moment from which the adapter is powered and bluetoothd on the bus again."""
        fault_.strike(self)
        if self.daemon:
            wait_for("bluetoothd on the bus", 20, self.lab.bluetoothd_owned)
            self.lab.wait_powered()
        return now()

    def start_again(self):
        self.lab.start_bluetoothd(*self.options, adapters=())

    def hang(self, seconds):
        self.lab.bluetoothd_process.hang(True)
        sleep(seconds)
        self.lab.bluetoothd_process.hang(False)


@fault("Unplugged", "the adapter is unplugged, and plugged in again 1 s later")
def unplugged(scene):
    scene.controller.do("unplug")
    sleep(1)
    scene.controller.plug()


@fault("SwitchedOff", "the adapter is powered off, and on again 1 s later", needs="daemon")
def switched_off(scene):
    scene.lab.set_powered(False)
    sleep(1)
    scene.lab.set_powered(True)


@fault("Blocked", "rfkill blocks the adapter for 1 s")
def blocked(scene):
    scene.lab.block(True)
    sleep(1)
    scene.lab.block(False)


@fault("Restarted", "bluetoothd is restarted by the service manager", needs="daemon")
def restarted(scene):
    scene.lab.bluetoothd_process.kill(15)
    scene.start_again()


@fault("Killed", "bluetoothd crashes and is back at once", needs="daemon", without=12)
def killed(scene):
    scene.lab.bluetoothd_process.kill()
    scene.start_again()


@fault("BusRestarted", "dbus-daemon is started anew, and bluetoothd with it", needs="daemon", without=12)
def bus_restarted(scene):
    scene.lab.bluetoothd_process.kill()
    scene.lab.restart_bus()
    scene.start_again()


@fault("HungShortly", "bluetoothd hangs for 2 s", needs="daemon")
def hung_shortly(scene):
    scene.hang(2)


@fault("Hung", "bluetoothd hangs for 5 s", needs="daemon")
def hung(scene):
    scene.hang(5)


@fault("Starved", "bluetoothd hangs for 12 s at 50 reports/s", needs="daemon", without=None)
def starved(scene):
    scene.controller.dongle("busy", address="C0:00:00:00:02:01", payload="024e43000201", rate=50)
    scene.hang(12)
    scene.controller.do("remove busy")


@fault("Flooded", "5,000 reports/s for 14 s", without=None)
def flooded(scene):
    for number in range(FLOODERS):
        scene.controller.dongle(f"flood{number}", address=f"C0:00:00:00:03:{number:02X}",
                                payload=f"024e430003{number:02x}", rate=FLOOD / FLOODERS)
    sleep(14)
    for number in range(FLOODERS):
        scene.controller.do(f"remove flood{number}")


@fault("Dead", "the controller answers nothing for 5 s")
def dead(scene):
    scene.controller.do("mute on")
    sleep(5)
    scene.controller.do("mute off")


@fault("TurnedOff", "somebody turns the scan off behind everybody's back", needs="daemon", limit=35, without=35)
def turned_off(scene):
    for _ in range(3):  # bluetoothd turns it on again by itself now and then
        send_command(0, SET_SCAN_ENABLE, b"\x00\x00")
        sleep(0.1)


@fault("Suspended", "the machine sleeps for 2 s")
def suspended(scene):
    scene.lab.freeze(2)
