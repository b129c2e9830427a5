// SPDX-License-Identifier: Apache-2.0
// What a client offers to bluetoothd to watch for, read as bluetoothd reads it.
#include "Daemon.h"
#include "Message.h"

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

namespace nearcast::bluezd {

namespace {

void sayPatterns(sd_bus_message* answer) {
    check(sd_bus_message_enter_container(answer, 'v', "a(yyay)"), "the patterns");
    check(sd_bus_message_enter_container(answer, 'a', "(yyay)"), "the patterns");
    while (check(sd_bus_message_enter_container(answer, 'r', "yyay"), "a pattern") > 0) {
        std::uint8_t start = 0;
        std::uint8_t type = 0;
        const void* octets = nullptr;
        std::size_t length = 0;
        check(sd_bus_message_read(answer, "yy", &start, &type), "a pattern");
        check(sd_bus_message_read_array(answer, 'y', &octets, &length), "its octets");
        std::printf("Monitor pattern %d %d ", start, type);
        for (std::size_t i = 0; i < length; ++i) std::printf("%02X", static_cast<const std::uint8_t*>(octets)[i]);
        std::printf("\n");
        check(sd_bus_message_exit_container(answer), "a pattern");
    }
    check(sd_bus_message_exit_container(answer), "the patterns");
    check(sd_bus_message_exit_container(answer), "the patterns");
}

void sayProperties(sd_bus_message* answer) {
    check(sd_bus_message_enter_container(answer, 'a', "{sv}"), "the properties");
    while (check(sd_bus_message_enter_container(answer, 'e', "sv"), "a property") > 0) {
        const char* name = nullptr;
        check(sd_bus_message_read(answer, "s", &name), "its name");
        if (std::string(name) == "Patterns") {
            sayPatterns(answer);
        } else if (std::string(name) == "Type") {
            const char* type = nullptr;
            check(sd_bus_message_read(answer, "v", "s", &type), "the type");
            std::printf("Monitor type %s\n", type);
        } else {
            check(sd_bus_message_skip(answer, "v"), "a property");
        }
        check(sd_bus_message_exit_container(answer), "a property");
    }
    check(sd_bus_message_exit_container(answer), "the properties");
}

void sayInterfaces(sd_bus_message* answer) {
    check(sd_bus_message_enter_container(answer, 'a', "{sa{sv}}"), "the interfaces");
    while (check(sd_bus_message_enter_container(answer, 'e', "sa{sv}"), "an interface") > 0) {
        const char* name = nullptr;
        check(sd_bus_message_read(answer, "s", &name), "its name");
        if (std::string(name) == "org.bluez.AdvertisementMonitor1") {
            sayProperties(answer);
        } else {
            check(sd_bus_message_skip(answer, "a{sv}"), "an interface");
        }
        check(sd_bus_message_exit_container(answer), "an interface");
    }
    check(sd_bus_message_exit_container(answer), "the interfaces");
}

void sayObjects(sd_bus_message* answer) {
    check(sd_bus_message_enter_container(answer, 'a', "{oa{sa{sv}}}"), "the objects");
    while (check(sd_bus_message_enter_container(answer, 'e', "oa{sa{sv}}"), "an object") > 0) {
        const char* path = nullptr;
        check(sd_bus_message_read(answer, "o", &path), "its path");
        std::printf("Monitor path %s\n", path);
        sayInterfaces(answer);
        check(sd_bus_message_exit_container(answer), "an object");
    }
}

int sayMonitors(sd_bus_message* answer, void* /*self*/, sd_bus_error* /*error*/) noexcept {
    try {
        if (const sd_bus_error* error = sd_bus_message_get_error(answer)) {
            std::printf("Monitor refused %s\n", error->name);
        } else {
            sayObjects(answer);
        }
    } catch (const std::exception& problem) {
        std::printf("Monitor malformed %s\n", problem.what());
    }
    std::fflush(stdout);
    return 0;
}

int sayReleased(sd_bus_message* answer, void* /*self*/, sd_bus_error* /*error*/) noexcept {
    const sd_bus_error* const error = sd_bus_message_get_error(answer);
    std::printf("%s\n", error == nullptr ? "released" : error->name);
    std::fflush(stdout);
    return 0;
}

}  // namespace

void Daemon::releaseMonitor(const std::string& client, const std::string& monitor) {
    check(sd_bus_call_method_async(bus_.get(), nullptr, client.c_str(), monitor.c_str(),
                                   "org.bluez.AdvertisementMonitor1", "Release", sayReleased, nullptr, nullptr),
          "a release");
}

void Daemon::readMonitors(const char* client, const char* application) {
    check(sd_bus_call_method_async(bus_.get(), nullptr, client, application, "org.freedesktop.DBus.ObjectManager",
                                   "GetManagedObjects", sayMonitors, nullptr, nullptr),
          "a question for monitors");
}

}  // namespace nearcast::bluezd
