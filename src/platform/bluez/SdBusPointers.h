// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace nearcast::bluez {

struct SdBusDeleter {
    /// What was not sent yet stays unsent: waiting for it could take for ever.
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};

using BusPointer = std::unique_ptr<sd_bus, SdBusDeleter>;
using SlotPointer = std::unique_ptr<sd_bus_slot, SdBusDeleter>;
using MessagePointer = std::unique_ptr<sd_bus_message, SdBusDeleter>;

}  // namespace nearcast::bluez
