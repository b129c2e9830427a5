// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Shop.h"

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

namespace nearcast::bluezd {

struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

/// Throws std::system_error where a call of the bus library failed.
/// @return the call's result
int check(int result, const char* what);

struct AdapterState {
    bool present = true;
    bool powered = true;
    bool discovering = false;
};

/// Writes the properties that BlueZ's objects show, as `a{sv}` or `a{sa{sv}}`.
void appendAdapterProperties(sd_bus_message* message, const AdapterState& adapter);
void appendDeviceProperties(sd_bus_message* message, const Device& device);
/// What changes with a report: RSSI and ManufacturerData, as `a{sv}`.
void appendReport(sd_bus_message* message, const Device& device);
void appendBoolean(sd_bus_message* message, const char* name, bool value);

/// The interfaces of an object, as `a{sa{sv}}`.
void appendAdapterInterfaces(sd_bus_message* message, const AdapterState& adapter, bool monitors);
void appendDeviceInterfaces(sd_bus_message* message, const Device& device);

inline constexpr const char* adapterPath = "/org/bluez/hci0";
inline constexpr const char* adapterInterface = "org.bluez.Adapter1";
inline constexpr const char* deviceInterface = "org.bluez.Device1";
inline constexpr const char* monitorInterface = "org.bluez.AdvertisementMonitorManager1";
inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
inline constexpr const char* objectsInterface = "org.freedesktop.DBus.ObjectManager";

}  // namespace nearcast::bluezd
