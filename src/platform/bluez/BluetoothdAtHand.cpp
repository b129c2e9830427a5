// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluetoothdAtHand.h"

#include "platform/bluez/SdBusPointers.h"

#include <cstring>

namespace nearcast::bluez {

namespace {

constexpr std::uint64_t longestWait = 2'000'000;  // microseconds
constexpr const char* service = "org.bluez";

/// The answer of the bus itself to a method without arguments, or with the service's name; null when there is none.
MessagePointer ask(sd_bus* bus, const char* method, bool aboutService) {
    constexpr const char* name = "org.freedesktop.DBus";
    sd_bus_message* answer = nullptr;
    const int result =
        aboutService
            ? sd_bus_call_method(bus, name, "/org/freedesktop/DBus", name, method, nullptr, &answer, "s", service)
            : sd_bus_call_method(bus, name, "/org/freedesktop/DBus", name, method, nullptr, &answer, nullptr);
    return MessagePointer(result < 0 ? nullptr : answer);
}

bool runs(sd_bus* bus) {
    const MessagePointer answer = ask(bus, "NameHasOwner", true);
    int owned = 0;
    return answer && sd_bus_message_read(answer.get(), "b", &owned) > 0 && owned != 0;
}

bool canBeStarted(sd_bus* bus) {
    const MessagePointer answer = ask(bus, "ListActivatableNames", false);
    if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "s") < 0) return false;
    const char* name = nullptr;
    while (sd_bus_message_read(answer.get(), "s", &name) > 0) {
        if (std::strcmp(name, service) == 0) return true;
    }
    return false;
}

}  // namespace

bool isBluetoothdAtHand() noexcept {
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0) return false;
    const BusPointer bus(opened);
    sd_bus_set_method_call_timeout(bus.get(), longestWait);
    return runs(bus.get()) || canBeStarted(bus.get());
}

}  // namespace nearcast::bluez
