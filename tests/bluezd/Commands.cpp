// SPDX-License-Identifier: Apache-2.0
// What the test makes happen, a line each on standard input.
#include "Daemon.h"

#include <cstdio>
#include <ctime>
#include <sstream>

namespace nearcast::bluezd {

void Daemon::command(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string what;
    words >> verb >> what;
    bool known = true;
    if (verb == "power") {
        power(what == "on");
    } else if (verb == "plug" || verb == "unplug") {
        plug(verb == "plug");
    } else if (verb == "mute" || verb == "unmute") {
        mute_ = verb == "mute";
    } else if (verb == "silence" || verb == "wake") {
        Device* device = shop_.find(what);
        known = device != nullptr;
        if (known) device->silent = verb == "silence";
    } else if (verb == "fail") {
        failing_ = what;
        known = static_cast<bool>(words >> failure_);
    } else if (verb == "lose") {  // another client has upset the discovery: it is over, and ours is forgotten
        discoverers_.clear();
        setDiscovering(false);
    } else if (verb == "release") {
        std::string monitor;
        words >> monitor;
        return releaseMonitor(what, monitor);
    } else if (verb == "forge") {
        known = forge(what);
    } else if (verb == "odd") {
        sayOddThings();
    } else if (verb == "quit") {
        quit_ = true;
    } else {
        known = verb == "count";
    }
    if (verb == "count") {
        std::printf("sent %llu\n", static_cast<unsigned long long>(sent_));
    } else {
        std::printf("%s\n", known ? "done" : "what?");
    }
    std::fflush(stdout);
}

void Daemon::power(bool on) {
    if (!adapter_.present || adapter_.powered == on) return;
    adapter_.powered = on;
    if (!on) {
        discoverers_.clear();
        removeDevices();
        setDiscovering(false);
    }
    signalAdapter("Powered", on);
}

void Daemon::plug(bool in) {
    if (adapter_.present == in) return;
    if (!in) {
        discoverers_.clear();
        removeDevices();
        setDiscovering(false);
        signalInterfacesRemoved(adapterPath, adapterInterface);
    }
    adapter_.present = in;
    adapter_.powered = true;
    if (in) signalInterfacesAdded(adapterPath, nullptr);
}

void Daemon::setDiscovering(bool on) {
    if (adapter_.discovering == on) return;
    adapter_.discovering = on;
    signalAdapter("Discovering", on);
    if (!on) {
        shop_.stop();
        return;
    }
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    shop_.start(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

void Daemon::removeDevices() {
    for (Device& device : shop_.devices()) {
        if (device.shown) signalInterfacesRemoved(device.path.c_str(), deviceInterface);
        device.shown = false;
    }
}

void Daemon::signalInterfacesAdded(const char* path, const Device* device) {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_signal(bus_.get(), &raw, "/", objectsInterface, "InterfacesAdded"), "a signal");
    const Message message(raw);
    check(sd_bus_message_append(raw, "o", path), "a path");
    if (device != nullptr) {
        appendDeviceInterfaces(raw, *device);
    } else {
        appendAdapterInterfaces(raw, adapter_, options_.monitors);
    }
    send(raw);
}

void Daemon::signalInterfacesRemoved(const char* path, const char* interface) {
    check(sd_bus_emit_signal(bus_.get(), "/", objectsInterface, "InterfacesRemoved", "oas", path, 1, interface),
          "a signal");
}

/// Signals whose contents are not what their names promise.
void Daemon::sayOddThings() {
    const char* const device = shop_.devices().empty() ? "/org/bluez/hci0/dev_X" : shop_.devices()[0].path.c_str();
    sd_bus* const bus = bus_.get();
    const auto changed = [&](const char* path, const char* types, auto... values) {
        check(sd_bus_emit_signal(bus, path, propertiesInterface, "PropertiesChanged", types, values...), "a signal");
    };
    changed(device, "");
    changed(device, "u", 7);
    changed(device, "s", deviceInterface);
    changed(device, "sa{sv}as", deviceInterface, 1, "RSSI", "s", "loud", 0);
    changed(device, "sa{sv}as", deviceInterface, 1, "ManufacturerData", "ay", 2, 1, 2, 0);
    changed(device, "sa{sv}as", deviceInterface, 1, "ManufacturerData", "a{qv}", 1, 0xFFFF, "u", 7, 0);
    changed(device, "sa{sv}as", deviceInterface, 1, "UUIDs", "as", 2, "", "no service", 0);
    changed(device, "sa{sv}s", deviceInterface, 1, "RSSI", "n", -60, "RSSI");
    changed(adapterPath, "sa{sv}as", adapterInterface, 1, "Powered", "s", "no", 0);
    changed("/org/bluez/hci0/dev_02_00", "sa{sv}as", deviceInterface, 1, "RSSI", "n", -60, 0);
    check(sd_bus_emit_signal(bus, "/", objectsInterface, "InterfacesAdded", "s", "what"), "a signal");
    check(sd_bus_emit_signal(bus, "/", objectsInterface, "InterfacesAdded", "oa{sa{sv}}", "/", 1, deviceInterface, 0),
          "a signal");
    check(sd_bus_emit_signal(bus, "/", objectsInterface, "InterfacesRemoved", "o", "/"), "a signal");
}

void Daemon::signalAdapter(const char* property, bool value) {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_signal(bus_.get(), &raw, adapterPath, propertiesInterface, "PropertiesChanged"),
          "a signal");
    const Message message(raw);
    check(sd_bus_message_append(raw, "s", adapterInterface), "an interface");
    check(sd_bus_message_open_container(raw, 'a', "{sv}"), "the properties");
    appendBoolean(raw, property, value);
    check(sd_bus_message_close_container(raw), "the properties");
    check(sd_bus_message_append(raw, "as", 0), "invalidated properties");
    send(raw);
}

}  // namespace nearcast::bluezd
