// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"

#include <systemd/sd-bus.h>

#include <functional>
#include <string_view>

namespace nearcast::bluez {

// Reading BlueZ's messages where they lie: texts and octets of what is read point into the message. Each function
// returns a negative errno where the message is not what it should be.

namespace interface {
inline constexpr const char* adapter = "org.bluez.Adapter1";
inline constexpr const char* device = "org.bluez.Device1";
inline constexpr const char* monitorManager = "org.bluez.AdvertisementMonitorManager1";
inline constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
inline constexpr const char* properties = "org.freedesktop.DBus.Properties";
}  // namespace interface

/// Reads `a{sv}` of an Adapter1.
int readAdapter(sd_bus_message* message, AdapterNews& news);
/// Reads `a{sv}` of a Device1. Of several companies' data those of the dongles' company are taken, else the first.
int readDevice(sd_bus_message* message, DeviceNews& news);
/// Reads `as`, the properties of a Device1 that have become invalid.
int readInvalidated(sd_bus_message* message, DeviceNews& news);
/// Reads `a{sa{sv}}`, an object's interfaces, and tells the listener of them.
/// @param listed whether it comes from a list, and not because the object has come
/// @param news   room that is used again
int readInterfaces(sd_bus_message* message, std::string_view path, bool listed, DeviceNews& news,
                   SystemBusListener& listener);
/// Reads `a{oa{sa{sv}}}`, all objects, and tells the listener of them.
int readObjects(sd_bus_message* message, DeviceNews& news, SystemBusListener& listener);

}  // namespace nearcast::bluez
