# SPDX-License-Identifier: Apache-2.0
"""Another program of the user's that uses Bluetooth: a settings panel, say."""

import dbus


class OtherClient:
    """A connection of its own to bluetoothd; what it began ends with it."""

    def __init__(self, adapter="hci0"):
        self.bus = dbus.SystemBus(private=True)
        proxy = self.bus.get_object("org.bluez", f"/org/bluez/{adapter}", introspect=False)
        self.adapter = dbus.Interface(proxy, "org.bluez.Adapter1")

    def filter(self, **settings):
        self.adapter.SetDiscoveryFilter(dbus.Dictionary(settings, signature="sv"), timeout=10)

    def start(self):
        self.adapter.StartDiscovery(timeout=10)

    def stop(self):
        self.adapter.StopDiscovery(timeout=10)

    def close(self):
        self.bus.close()
