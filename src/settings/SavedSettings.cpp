// SPDX-License-Identifier: Apache-2.0
#include "settings/SavedSettings.h"

#include <nearcast/QXBluetoothManager.h>

#include <memory>
#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

constexpr std::string_view kQXPrinter = "Printer";
constexpr std::string_view kQXTFTillfox = "TF-Tillfox";

/// The word under which a device type is saved. Only two have one; the others are lost by a save.
std::optional<std::string_view> wordOf(const SettingValue& deviceType) {
    if (deviceType == SettingValue(QXDeviceTypeDesktopPrinter) ||
        deviceType == SettingValue(double{QXDeviceTypeDesktopPrinter}) || deviceType == SettingValue(true)) {
        return kQXPrinter;
    }
    if (deviceType == SettingValue(QXDeviceTypeTFTillfox) ||
        deviceType == SettingValue(double{QXDeviceTypeTFTillfox})) {
        return kQXTFTillfox;
    }
    return std::nullopt;
}

std::optional<QXDeviceType> typeOf(std::string_view word) {
    if (word == kQXPrinter) return QXDeviceTypeDesktopPrinter;
    if (word == kQXTFTillfox) return QXDeviceTypeTFTillfox;
    return std::nullopt;
}

[[noreturn]] void misshapen(const std::string& where, const char* what) {
    throw std::invalid_argument("settings: " + where + " is not " + what);
}

SettingRecord loadedRecord(const std::string& portName, SettingValue value) {
    auto* record = value.as<SettingRecord>();
    if (record == nullptr) misshapen("the record of \"" + portName + "\"", "an object");
    const auto deviceType = record->find(kQXDeviceType);
    if (deviceType == record->end()) return std::move(*record);
    const auto* word = deviceType->second.as<std::string>();
    if (word == nullptr) misshapen("\"Device Type\" of \"" + portName + "\"", "a text");
    if (const auto type = typeOf(*word)) {
        deviceType->second = *type;
    } else {
        record->erase(deviceType);
    }
    return std::move(*record);
}

}  // namespace

SettingRecord savedRecord(const SettingRecord& record) {
    SettingRecord copy = record;
    const auto deviceType = copy.find(kQXDeviceType);
    if (deviceType == copy.end()) return copy;
    if (const auto word = wordOf(deviceType->second)) {
        deviceType->second = *word;
    } else {
        copy.erase(deviceType);
    }
    return copy;
}

Settings settingsOf(SettingValue value) {
    auto* members = value.as<SettingValue::Dictionary>();
    if (members == nullptr) misshapen("the whole", "an object");
    Settings settings;
    for (auto& [portName, member] : *members) {
        auto record = std::make_shared<const SettingRecord>(loadedRecord(portName, std::move(member)));
        settings.emplace_hint(settings.end(), portName, std::move(record));
    }
    return settings;
}

SettingValue savedValue(const Settings& settings) {
    SettingValue::Dictionary copies;
    for (const auto& [portName, record] : settings) {
        copies.emplace_hint(copies.end(), portName, record ? savedRecord(*record) : SettingRecord());
    }
    return copies;
}

std::optional<std::string> savedSettings(const Settings& settings, const NSJSONSerialization& JSON) {
    const SettingValue value = savedValue(settings);
    if (!JSON.isValidJSONObject(value)) return std::nullopt;
    return JSON.dataWithJSONObject(value);
}

bool isDeviceType(std::string_view word) { return typeOf(word).has_value(); }

std::optional<Settings> loadedSettings(std::string_view text, const NSJSONSerialization& JSON) {
    auto value = JSON.JSONObjectWithData(text);
    if (!value) return std::nullopt;
    return settingsOf(*std::move(value));
}

}  // namespace nearcast
