// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// Why something on the bus did not work.
struct BusProblem {
    std::string name;     ///< of the D-Bus error: "org.freedesktop.DBus.Error.AccessDenied"
    std::string message;  ///< in words
};

/// An adapter as bluetoothd shows it.
struct BusAdapter {
    std::string name;  ///< "hci0"
    std::string address;
    bool powered = false;
    bool discovering = false;            ///< for anybody
    std::optional<bool> central;         ///< can listen to Low Energy; nothing: bluetoothd does not say
    bool advertisementMonitors = false;  ///< has org.bluez.AdvertisementMonitorManager1
};

/// What the system bus tells of Bluetooth at one moment.
struct BusReading {
    std::optional<BusProblem> unreachable;  ///< there is no bus to be asked; the rest is empty
    bool bluetoothd = false;                ///< somebody owns org.bluez
    bool atHand = false;                    ///< so it is, or the bus can start bluetoothd
    std::optional<std::uint32_t> process;   ///< whose process, where the bus says so
    std::optional<BusProblem> refused;      ///< bluetoothd did not show its objects
    std::vector<BusAdapter> adapters;       ///< in the order of their names
};

/// Asks the system bus (DBUS_SYSTEM_BUS_ADDRESS, or the usual one). Takes as long as bluetoothd takes to answer, five
/// seconds at most. Starts nothing. Never throws but for want of memory.
BusReading readBus();

}  // namespace nearcast::cli
