// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Availability.h"

#include "platform/system/SystemClock.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

namespace nearcast::bluez {

namespace {

using Microseconds = std::chrono::microseconds;

/// Calls a method of the bus itself, with bluetoothd's name as its argument or without one.
/// @return null where it failed
MessagePointer ask(sd_bus* bus, const char* method, bool aboutService) {
    sd_bus_message* answer = nullptr;
    sd_bus_call_method(bus, driver::name, driver::path, driver::name, method, nullptr, &answer,
                       aboutService ? "s" : nullptr, service);
    return MessagePointer(answer);
}

bool runs(sd_bus* bus) {
    const MessagePointer answer = ask(bus, "NameHasOwner", true);
    int owned = 0;
    if (answer) sd_bus_message_read(answer.get(), "b", &owned);
    return owned != 0;
}

bool canBeStarted(sd_bus* bus) {
    const MessagePointer answer = ask(bus, "ListActivatableNames", false);
    if (!answer || failed(sd_bus_message_enter_container(answer.get(), 'a', "s"))) return false;
    const char* name = nullptr;
    while (sd_bus_message_read(answer.get(), "s", &name) > 0) {
        if (std::string_view(name) == service) return true;
    }
    return false;
}

}  // namespace

int awaitGreeting(sd_bus* bus, Microseconds limit) noexcept {
    const auto end = SystemClock::now() + limit;
    while (sd_bus_is_ready(bus) == 0) {
        const int taken = sd_bus_process(bus, nullptr);
        if (failed(taken)) return taken;
        if (taken > 0) continue;
        const auto left = std::chrono::duration_cast<Microseconds>(end - SystemClock::now());
        if (left <= Microseconds(0)) return -ETIMEDOUT;
        const int waited = sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()));
        if (failed(waited) && waited != -EINTR) return waited;
    }
    return std::min(sd_bus_is_ready(bus), 0);
}

bool isBluetoothdAvailable(Microseconds limit) noexcept {
    sd_bus* opened = nullptr;
    if (failed(sd_bus_open_system(&opened))) return false;
    const BusPointer bus(opened);
    if (failed(awaitGreeting(opened, limit))) return false;
    sd_bus_set_method_call_timeout(opened, static_cast<std::uint64_t>(limit.count()));
    return runs(opened) || canBeStarted(opened);
}

}  // namespace nearcast::bluez
