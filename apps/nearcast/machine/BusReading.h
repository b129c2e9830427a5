// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// Why something on the bus failed; the name is empty where it was no D-Bus error.
using BusProblem = bluez::Failure;

/// An adapter as bluetoothd shows it.
struct BusAdapter {
    std::string name;     ///< "hci0"
    std::string address;  ///< "00:1A:7D:DA:71:13"; empty: it has none
    bool powered = false;
    bool discovering = false;            ///< for any client
    std::optional<bool> central;         ///< can scan for Low Energy; nothing: bluetoothd does not say
    bool advertisementMonitors = false;  ///< has org.bluez.AdvertisementMonitorManager1
};

/// What the system bus says of Bluetooth at one moment.
struct BusReading {
    std::optional<BusProblem> unreachable;  ///< the bus does not answer; the rest is empty
    bool bluetoothd = false;                ///< bluetoothd runs: org.bluez has an owner
    bool available = false;                 ///< it runs, or the bus can start it
    std::optional<std::uint32_t> process;   ///< the owner's process, where the bus says so
    std::optional<BusProblem> refused;      ///< why bluetoothd did not show its objects
    std::vector<BusAdapter> adapters;       ///< in the order of their numbers
};

/// Asks the system bus (DBUS_SYSTEM_BUS_ADDRESS, or the usual one). Takes as long as bluetoothd takes to answer, five
/// seconds at most. Starts nothing. Throws std::bad_alloc at most.
BusReading readBus();

}  // namespace nearcast::cli
