// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string_view>

namespace nearcast::bluez {

struct SdBusDeleter {
    /// Drops what has not been sent yet, because waiting for that could take forever. Its descriptor may have been
    /// closed by somebody.
    void operator()(sd_bus* bus) const noexcept;
    void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using BusPointer = std::unique_ptr<sd_bus, SdBusDeleter>;
using SlotPointer = std::unique_ptr<sd_bus_slot, SdBusDeleter>;
using MessagePointer = std::unique_ptr<sd_bus_message, SdBusDeleter>;

inline constexpr const char* service = "org.bluez";

/// The bus itself, as one that answers calls.
namespace driver {
inline constexpr const char* name = "org.freedesktop.DBus";
inline constexpr const char* path = "/org/freedesktop/DBus";
}  // namespace driver

namespace interface {
inline constexpr const char* adapter = "org.bluez.Adapter1";
inline constexpr const char* device = "org.bluez.Device1";
inline constexpr const char* monitorManager = "org.bluez.AdvertisementMonitorManager1";
inline constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
inline constexpr const char* properties = "org.freedesktop.DBus.Properties";
}  // namespace interface

/// Whether that is a failure of sd-bus: a negative errno. 0 and more are what a call that went well says.
constexpr bool failed(int result) noexcept { return result < 0; }
/// What a negative errno of sd-bus says.
Failure failureOf(int result);
/// The error that a reply holds; nothing where the call succeeded.
/// @param error as sd-bus has it, or null
std::optional<Failure> failureIn(const sd_bus_error* error);

// These read BlueZ's messages in place: texts and octets of what is read point into the message. Each returns a
// negative errno where the message is not what it should be.

/// Reads `a{sv}` of an Adapter1.
int readAdapter(sd_bus_message* message, AdapterNews& news);
/// Reads `a{sv}` of a Device1. Of several companies' data those of the dongles' company are taken, else the first.
int readDevice(sd_bus_message* message, DeviceNews& news);
/// Reads `as`, the properties of a Device1 that have become invalid.
int readInvalidated(sd_bus_message* message, DeviceNews& news);
/// Reads `a{sa{sv}}`, an object's interfaces, and tells the listener of them.
/// @param listed whether it comes from a list, and not because the object has come
/// @param news   memory that is used again
int readInterfaces(sd_bus_message* message, std::string_view path, bool listed, DeviceNews& news,
                   ObjectListener& listener);
/// Reads `a{oa{sa{sv}}}`, all objects, and tells the listener of them.
int readObjects(sd_bus_message* message, DeviceNews& news, ObjectListener& listener);
/// Reads `oas`, an object and its interfaces that have gone, and tells the listener of them.
int readRemoved(sd_bus_message* message, SystemBusListener& listener);

}  // namespace nearcast::bluez
