// SPDX-License-Identifier: Apache-2.0
// What clients call.
#include "Daemon.h"

#include <exception>

namespace nearcast::bluezd {

namespace {

int reply(sd_bus_message* call) { return sd_bus_reply_method_return(call, nullptr); }

int refuse(sd_bus_message* call, const char* name, const char* why) {
    return sd_bus_reply_method_errorf(call, name, "%s", why);
}

int unknownMethod(sd_bus_message* call) { return refuse(call, SD_BUS_ERROR_UNKNOWN_METHOD, "there is no such method"); }

int unknownObject(sd_bus_message* call) { return refuse(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "there is no such object"); }

int notReady(sd_bus_message* call) { return refuse(call, "org.bluez.Error.NotReady", "Resource Not Ready"); }

const char* orEmpty(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

int Daemon::handle(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(call, nullptr, nullptr) <= 0) return 0;
    try {
        return static_cast<Daemon*>(self)->answer(call);
    } catch (const std::exception& problem) {
        return refuse(call, SD_BUS_ERROR_FAILED, problem.what());
    }
}

int Daemon::clientGone(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) < 0 || *after != '\0') return 0;
    Daemon& daemon = *static_cast<Daemon*>(self);
    if (daemon.discoverers_.erase(name) > 0 && daemon.discoverers_.empty()) daemon.setDiscovering(false);
    return 0;
}

int Daemon::answer(sd_bus_message* call) {
    const std::string path = orEmpty(sd_bus_message_get_path(call));
    const std::string interface = orEmpty(sd_bus_message_get_interface(call));
    const std::string member = orEmpty(sd_bus_message_get_member(call));
    if (interface == "org.freedesktop.DBus.Peer") return 0;
    if (member == failing_) {
        failing_.clear();
        return refuse(call, failure_.c_str(), "as asked for");
    }
    if (path == "/" && interface == objectsInterface && member == "GetManagedObjects") return managedObjects(call);
    if (path == "/" || path == "/org/bluez") return unknownMethod(call);
    if (path != adapterPath || !adapter_.present) return unknownObject(call);
    if (interface == adapterInterface) return adapterCall(call, member);
    if (interface == monitorInterface && options_.monitors) return monitorCall(call, member);
    if (interface == propertiesInterface && member == "Set") return setProperty(call);
    return unknownMethod(call);
}

int Daemon::managedObjects(sd_bus_message* call) {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_method_return(call, &raw), "an answer");
    const Message message(raw);
    const auto object = [raw](const char* path, const auto& interfaces) {
        check(sd_bus_message_open_container(raw, 'e', "oa{sa{sv}}"), "an object");
        check(sd_bus_message_append(raw, "o", path), "a path");
        interfaces();
        check(sd_bus_message_close_container(raw), "an object");
    };
    check(sd_bus_message_open_container(raw, 'a', "{oa{sa{sv}}}"), "the objects");
    if (adapter_.present) object(adapterPath, [&] { appendAdapterInterfaces(raw, adapter_, options_.monitors); });
    for (const Device& device : shop_.devices()) {
        if (device.shown) object(device.path.c_str(), [&] { appendDeviceInterfaces(raw, device); });
    }
    check(sd_bus_message_close_container(raw), "the objects");
    send(raw);
    return 1;
}

int Daemon::adapterCall(sd_bus_message* call, const std::string& member) {
    if (member != "SetDiscoveryFilter" && member != "StartDiscovery" && member != "StopDiscovery") {
        return unknownMethod(call);
    }
    if (!adapter_.powered) return notReady(call);
    if (member == "StartDiscovery") return startDiscovery(call);
    if (member == "StopDiscovery") return stopDiscovery(call);
    return reply(call);
}

int Daemon::startDiscovery(sd_bus_message* call) {
    int& sessions = discoverers_[sd_bus_message_get_sender(call)];
    if (sessions > 0) return refuse(call, "org.bluez.Error.InProgress", "Operation already in progress");
    ++sessions;
    const int result = reply(call);
    setDiscovering(true);
    return result;
}

int Daemon::stopDiscovery(sd_bus_message* call) {
    if (discoverers_.erase(sd_bus_message_get_sender(call)) == 0) {
        return refuse(call, "org.bluez.Error.Failed", "No discovery started");
    }
    const int result = reply(call);
    if (discoverers_.empty()) setDiscovering(false);
    return result;
}

int Daemon::setProperty(sd_bus_message* call) {
    const char* interface = nullptr;
    const char* name = nullptr;
    check(sd_bus_message_read(call, "ss", &interface, &name), "a property");
    if (std::string(name) != "Powered") return refuse(call, SD_BUS_ERROR_PROPERTY_READ_ONLY, name);
    int value = 0;
    check(sd_bus_message_read(call, "v", "b", &value), "a value");
    const int result = reply(call);
    power(value != 0);
    return result;
}

int Daemon::monitorCall(sd_bus_message* call, const std::string& member) {
    if (member != "RegisterMonitor" && member != "UnregisterMonitor") return unknownMethod(call);
    const char* application = nullptr;
    check(sd_bus_message_read(call, "o", &application), "the application's path");
    std::printf("%s %s %s\n", member.c_str(), application, sd_bus_message_get_sender(call));
    std::fflush(stdout);
    const int result = reply(call);
    if (member == "RegisterMonitor") readMonitors(sd_bus_message_get_sender(call), application);
    return result;
}

}  // namespace nearcast::bluezd
