// SPDX-License-Identifier: Apache-2.0
#include "Message.h"

#include <array>
#include <functional>
#include <system_error>

namespace nearcast::bluezd {

namespace {

constexpr const char* dongleService = "4f37d906-3f43-440c-98e0-9e709971cadf";
constexpr std::uint16_t dongleCompany = 0xFFFF;

void container(sd_bus_message* message, char type, const char* contents, const std::function<void()>& fill) {
    check(sd_bus_message_open_container(message, type, contents), "opening a container");
    fill();
    check(sd_bus_message_close_container(message), "closing a container");
}

void property(sd_bus_message* message, const char* name, const char* type, const std::function<void()>& value) {
    container(message, 'e', "sv", [&] {
        check(sd_bus_message_append(message, "s", name), name);
        container(message, 'v', type, value);
    });
}

void text(sd_bus_message* message, const char* name, const std::string& value) {
    property(message, name, "s", [&] { check(sd_bus_message_append(message, "s", value.c_str()), name); });
}

void interface(sd_bus_message* message, const char* name, const std::function<void()>& properties) {
    container(message, 'e', "sa{sv}", [&] {
        check(sd_bus_message_append(message, "s", name), name);
        properties();
    });
}

void reportProperties(sd_bus_message* message, const Device& device) {
    property(message, "RSSI", "n", [&] { check(sd_bus_message_append(message, "n", device.RSSI), "RSSI"); });
    property(message, "ManufacturerData", "a{qv}", [&] {
        container(message, 'a', "{qv}", [&] {
            container(message, 'e', "qv", [&] {
                check(sd_bus_message_append(message, "q", dongleCompany), "a company");
                container(message, 'v', "ay", [&] {
                    check(sd_bus_message_append_array(message, 'y', device.address.data(), device.address.size()),
                          "a payload");
                });
            });
        });
    });
}

}  // namespace

int check(int result, const char* what) {
    if (result < 0) throw std::system_error(-result, std::generic_category(), what);
    return result;
}

void appendBoolean(sd_bus_message* message, const char* name, bool value) {
    property(message, name, "b", [&] { check(sd_bus_message_append(message, "b", static_cast<int>(value)), name); });
}

void appendReport(sd_bus_message* message, const Device& device) {
    container(message, 'a', "{sv}", [&] { reportProperties(message, device); });
}

void appendAdapterProperties(sd_bus_message* message, const AdapterState& adapter) {
    container(message, 'a', "{sv}", [&] {
        text(message, "Address", "02:00:00:00:00:00");
        text(message, "Name", "bluezd");
        appendBoolean(message, "Powered", adapter.powered);
        appendBoolean(message, "Discovering", adapter.discovering);
    });
}

void appendDeviceProperties(sd_bus_message* message, const Device& device) {
    container(message, 'a', "{sv}", [&] {
        text(message, "Address", Shop::text(device.address, ':'));
        text(message, "AddressType", "public");
        text(message, "Alias", Shop::text(device.address, '-'));
        appendBoolean(message, "Paired", false);
        appendBoolean(message, "Connected", false);
        property(message, "UUIDs", "as",
                 [&] { check(sd_bus_message_append(message, "as", 1, dongleService), "UUIDs"); });
        property(message, "Adapter", "o", [&] { check(sd_bus_message_append(message, "o", adapterPath), "Adapter"); });
        reportProperties(message, device);
    });
}

void appendAdapterInterfaces(sd_bus_message* message, const AdapterState& adapter, bool monitors) {
    container(message, 'a', "{sa{sv}}", [&] {
        interface(message, adapterInterface, [&] { appendAdapterProperties(message, adapter); });
        if (!monitors) return;
        interface(message, monitorInterface, [&] { container(message, 'a', "{sv}", [] {}); });
    });
}

void appendDeviceInterfaces(sd_bus_message* message, const Device& device) {
    container(message, 'a', "{sa{sv}}",
              [&] { interface(message, deviceInterface, [&] { appendDeviceProperties(message, device); }); });
}

}  // namespace nearcast::bluezd
