// SPDX-License-Identifier: Apache-2.0
// What a program that is not bluetoothd can send in its name. Sent to one connection alone, a signal arrives there
// whatever the connection's match rules say.
#include "Daemon.h"
#include "Message.h"

#include <functional>
#include <map>

namespace nearcast::bluezd {

namespace {

constexpr const char* dongle = "/org/bluez/hci0/dev_02_00_00_00_00_EE";

struct Forgery {
    const char* path;
    const char* interface;
    const char* member;
    std::function<int(sd_bus_message*)> fill;
};

const std::map<std::string, Forgery>& forgeries() {
    static const std::map<std::string, Forgery> all = {
        {"report",
         {dongle, propertiesInterface, "PropertiesChanged",
          [](sd_bus_message* message) {
              return sd_bus_message_append(message, "sa{sv}as", deviceInterface, 3, "RSSI", "n", -30,
                                           "ManufacturerData", "a{qv}", 1, 0xFFFF, "ay", 6, 2, 0, 0, 0, 0, 0xEE,
                                           "UUIDs", "as", 1, "4f37d906-3f43-440c-98e0-9e709971cadf", 0);
          }}},
        {"power",
         {adapterPath, propertiesInterface, "PropertiesChanged",
          [](sd_bus_message* message) {
              return sd_bus_message_append(message, "sa{sv}as", adapterInterface, 1, "Powered", "b", 0, 0);
          }}},
        {"removal",
         {"/", objectsInterface, "InterfacesRemoved",
          [](sd_bus_message* message) {
              return sd_bus_message_append(message, "oas", adapterPath, 1, adapterInterface);
          }}},
        {"owner",
         {"/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
          [](sd_bus_message* message) { return sd_bus_message_append(message, "sss", "org.bluez", ":1.0", ""); }}},
    };
    return all;
}

/// Calls `use` with the unique name of each connection that there is.
void eachConnection(sd_bus* bus, const std::function<void(const char* name)>& use) {
    sd_bus_message* raw = nullptr;
    check(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames",
                             nullptr, &raw, nullptr),
          "the names on the bus");
    const Message names(raw);
    check(sd_bus_message_enter_container(raw, 'a', "s"), "the names on the bus");
    const char* name = nullptr;
    while (check(sd_bus_message_read_basic(raw, 's', &name), "a name") > 0) {
        if (*name == ':') use(name);
    }
}

}  // namespace

bool Daemon::forge(const std::string& what) {
    const auto found = forgeries().find(what);
    if (found == forgeries().end()) return false;
    const Forgery& forgery = found->second;
    eachConnection(bus_.get(), [&](const char* name) {
        sd_bus_message* raw = nullptr;
        check(sd_bus_message_new_signal(bus_.get(), &raw, forgery.path, forgery.interface, forgery.member), "a signal");
        const Message message(raw);
        check(forgery.fill(raw), "what it says");
        check(sd_bus_message_set_destination(raw, name), "whom it is for");
        send(raw);
    });
    return true;
}

}  // namespace nearcast::bluezd
