// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SdMessage.h"

#include <functional>
#include <utility>

namespace nearcast::bluez {

/// Our side of an advertisement monitor (BlueZ, doc/advertisement-monitor-api.txt): an application root with an object
/// manager and, below it, one monitor for manufacturer data of the dongles' company. What the monitor finds is
/// ignored, since the reports come as signals of the devices. It is registered because its existence makes the kernel
/// ask the controller for every report.
class SdMonitor {
public:
    static constexpr const char* root = "/org/nearcast/monitors";

    using MayCall = std::function<bool(sd_bus_message* call)>;

    /// Neither throws.
    /// @param mayCall  whether a call comes from bluetoothd
    /// @param released called when bluetoothd releases the monitor
    SdMonitor(MayCall mayCall, std::function<void()> released)
        : mayCall_(std::move(mayCall)), released_(std::move(released)) {}
    SdMonitor(const SdMonitor&) = delete;
    SdMonitor& operator=(const SdMonitor&) = delete;

    /// Puts the objects on the bus, for as long as it lives; it goes before the monitor.
    /// @return a negative errno where that fails
    int exportOn(sd_bus* bus);

private:
    static int release(sd_bus_message* call, void* self, sd_bus_error* error) noexcept;
    static int nothing(sd_bus_message* call, void* self, sd_bus_error* error) noexcept;
    static int type(sd_bus* bus, const char* path, const char* interface, const char* property, sd_bus_message* reply,
                    void* self, sd_bus_error* error) noexcept;
    static int patterns(sd_bus* bus, const char* path, const char* interface, const char* property,
                        sd_bus_message* reply, void* self, sd_bus_error* error) noexcept;
    static const sd_bus_vtable methods[];

    const MayCall mayCall_;
    const std::function<void()> released_;
};

}  // namespace nearcast::bluez
