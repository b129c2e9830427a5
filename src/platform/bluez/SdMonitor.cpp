// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/SdMonitor.h"

#include "support/Dongle.h"

#include <cerrno>
#include <cstdint>

namespace nearcast::bluez {

namespace {

constexpr const char* monitorPath = "/org/nearcast/monitors/dongles";
constexpr const char* monitorInterface = "org.bluez.AdvertisementMonitor1";
// Core Specification Supplement, Part A, 1.4: manufacturer specific data begin with the company identifier.
constexpr std::uint8_t manufacturerSpecificData = 0xFF;

}  // namespace

const sd_bus_vtable SdMonitor::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Release", "", "", release, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Activate", "", "", nothing, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("DeviceFound", "o", "", nothing, SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_METHOD("DeviceLost", "o", "", nothing, SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_PROPERTY("Type", "s", type, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Patterns", "a(yyay)", patterns, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

int SdMonitor::exportOn(sd_bus* bus) {
    const int result = sd_bus_add_object_manager(bus, nullptr, root);
    return failed(result) ? result
                          : sd_bus_add_object_vtable(bus, nullptr, monitorPath, monitorInterface, methods, this);
}

int SdMonitor::release(sd_bus_message* call, void* self, sd_bus_error* /*error*/) noexcept {
    auto& monitor = *static_cast<SdMonitor*>(self);
    if (!monitor.mayCall_(call)) return -EPERM;
    monitor.released_();
    return sd_bus_reply_method_return(call, "");
}

int SdMonitor::nothing(sd_bus_message* call, void* self, sd_bus_error* /*error*/) noexcept {
    if (!static_cast<SdMonitor*>(self)->mayCall_(call)) return -EPERM;
    return sd_bus_reply_method_return(call, "");
}

int SdMonitor::type(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                    sd_bus_message* reply, void* /*self*/, sd_bus_error* /*error*/) noexcept {
    return sd_bus_message_append(reply, "s", "or_patterns");
}

int SdMonitor::patterns(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                        sd_bus_message* reply, void* /*self*/, sd_bus_error* /*error*/) noexcept {
    constexpr int start = 0;
    return sd_bus_message_append(reply, "a(yyay)", 1, start, int{manufacturerSpecificData}, 2,
                                 int{dongle::payloadMark[0]}, int{dongle::payloadMark[1]});
}

}  // namespace nearcast::bluez
