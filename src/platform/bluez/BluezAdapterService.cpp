// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezAdapterService.h"

#include "platform/bluez/Availability.h"
#include "platform/system/SystemClock.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>

namespace nearcast::bluez {

namespace {

constexpr std::chrono::microseconds answerLimit = std::chrono::seconds(2);

std::string pathOf(const std::string& adapter) { return "/org/bluez/" + adapter; }

/// @return null where there is no bus
BusPointer connect() {
    sd_bus* opened = nullptr;
    if (failed(sd_bus_open_system(&opened))) return nullptr;
    BusPointer bus(opened);
    if (failed(awaitGreeting(opened, answerLimit))) return nullptr;
    return bus;
}

/// Calls a method of org.freedesktop.DBus.Properties with a property of an adapter as its first arguments.
/// @param fill appends the others
/// @return null where it failed
template <class Fill>
MessagePointer call(sd_bus* bus, const std::string& path, const char* method, const char* property, Fill fill) {
    if (bus == nullptr) return nullptr;
    sd_bus_message* raw = nullptr;
    int result = sd_bus_message_new_method_call(bus, &raw, service, path.c_str(), interface::properties, method);
    const MessagePointer message(raw);
    if (!failed(result)) result = sd_bus_message_set_auto_start(raw, 0);
    if (!failed(result)) result = sd_bus_message_append(raw, "ss", interface::adapter, property);
    if (!failed(result)) result = fill(raw);
    if (failed(result)) return nullptr;
    sd_bus_message* answer = nullptr;
    result = sd_bus_call(bus, raw, static_cast<std::uint64_t>(answerLimit.count()), nullptr, &answer);
    return MessagePointer(failed(result) ? nullptr : answer);
}

/// @return nothing where bluetoothd does not say, or does not show the adapter
std::optional<bool> ask(sd_bus* bus, const std::string& path, const char* property) {
    const MessagePointer answer = call(bus, path, "Get", property, [](sd_bus_message*) { return 0; });
    int value = 0;
    if (!answer || failed(sd_bus_message_read(answer.get(), "v", "b", &value))) return std::nullopt;
    return value != 0;
}

bool turnOffOn(sd_bus* bus, const std::string& path) {
    if (ask(bus, path, "Discovering").value_or(false)) return false;
    return call(bus, path, "Set", "Powered", [](sd_bus_message* message) {
               return sd_bus_message_append(message, "v", "b", int{false});
           }) != nullptr;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

}  // namespace

bool isAutoEnable(std::string_view configuration) {
    bool enable = true;
    bool policy = false;
    while (!configuration.empty()) {
        const std::string_view line = configuration.substr(0, configuration.find('\n'));
        configuration.remove_prefix(std::min(line.size() + 1, configuration.size()));
        const std::string_view text = trimmed(line);
        if (text.starts_with('[')) policy = text == "[Policy]";
        const auto equals = text.find('=');
        if (!policy || equals == std::string_view::npos || trimmed(text.substr(0, equals)) != "AutoEnable") continue;
        const std::string_view value = trimmed(text.substr(equals + 1));
        enable = value != "false" && value != "0";
    }
    return enable;
}

BluezAdapterService::BluezAdapterService()
    : BluezAdapterService(configurationFile, {.pause = [](std::chrono::milliseconds step) {
                              SystemClock::sleepUntil(SystemClock::now() + step);
                          }}) {}

bool BluezAdapterService::turnsOn(const std::string& adapter) {
    std::ifstream file(configuration_);
    std::ostringstream text;
    text << file.rdbuf();
    if (!isAutoEnable(text.str())) return false;
    return ask(connect().get(), pathOf(adapter), "Powered") == false;
}

bool BluezAdapterService::turnOff(const std::string& adapter) { return turnOffOn(connect().get(), pathOf(adapter)); }

void BluezAdapterService::leaveOff(const std::string& adapter) {
    const BusPointer bus = connect();
    const std::string path = pathOf(adapter);
    int shown = 0;
    for (int looks = 0; bus && looks < patience_.looksForIt && shown < patience_.looksForPower; ++looks) {
        const auto on = ask(bus.get(), path, "Powered");
        if (on == true) {
            turnOffOn(bus.get(), path);
            return;
        }
        if (on) ++shown;
        patience_.pause(patience_.step);
    }
}

}  // namespace nearcast::bluez
