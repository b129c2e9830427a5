// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <stdexcept>

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

SettingRecord saved(const SettingRecord& record) {
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

[[noreturn]] void misshapen(const std::string& where, const char* what) {
    throw std::invalid_argument("settings: " + where + " is not " + what);
}

SettingRecord loaded(const std::string& portName, SettingValue value) {
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

Settings loadedSettings(SettingValue results) {
    auto* members = results.as<SettingValue::Dictionary>();
    if (members == nullptr) misshapen("the whole", "an object");
    Settings settings;
    for (auto& [portName, value] : *members) {
        auto record = std::make_shared<const SettingRecord>(loaded(portName, std::move(value)));
        settings.emplace_hint(settings.end(), portName, std::move(record));
    }
    return settings;
}

}  // namespace

std::shared_ptr<const Settings> Manager::snapshot() {
    return std::make_shared<const Settings>(mutableSettings.records());
}

std::shared_ptr<const Settings> Manager::getSettings() {
    const Trace trace = this->trace("-[QXNearcastManager getSettings]", Trace::Audience::internal);
    trace.start("");
    const NSLockGuard guard(_lockMutableSettingsFlag);
    auto settings = snapshot();
    trace.end("", Pointer{settings.get()});
    return settings;
}

void Manager::setSettings(std::optional<Settings> settings) {
    const Trace trace = this->trace("-[QXNearcastManager setSettings:]", Trace::Audience::internal);
    trace.start("", Pointer{settings ? &*settings : nullptr});
    Registry next = settings ? Registry(std::move(*settings)) : Registry();
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        mutableSettings.swap(next);
    }
    trace.end("");
}

std::optional<std::string> Manager::serializedSettings() {
    const Trace trace = this->trace("-[QXNearcastManager serializedSettings]", Trace::Audience::publicAPI);
    trace.start("");
    std::optional<std::string> data;
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        SettingValue::Dictionary copies;
        for (const auto& [portName, record] : mutableSettings.records()) {
            copies.emplace_hint(copies.end(), portName, saved(*record));
        }
        const SettingValue copiedSettings(std::move(copies));
        if (platform_.JSON().isValidJSONObject(copiedSettings)) {
            data = platform_.JSON().dataWithJSONObject(copiedSettings);
        } else {
            trace.process("[NSJSONSerialization isValidJSONObject:copiedSettings] == NO, ", Pointer{&copiedSettings});
            console(platform_.JSON().description(copiedSettings) + " is not JSONSerializable");
        }
    }
    trace.end("-> ", Pointer{data ? data->data() : nullptr});
    return data;
}

bool Manager::deserializeSettings(std::optional<std::string_view> data) {
    const Trace trace = this->trace("-[QXNearcastManager deserializeSettings:]", Trace::Audience::publicAPI);
    const Pointer buffer{data ? data->data() : nullptr};
    trace.start("", buffer);
    auto results = data ? platform_.JSON().JSONObjectWithData(*data) : std::nullopt;
    if (!results) {
        trace.error("results == nil, ", Pointer{nullptr});
        trace.end("", buffer, ", -> ", false);
        return false;
    }
    setSettings(loadedSettings(*std::move(results)));
    trace.end("", buffer, ", -> ", true);
    return true;
}

}  // namespace nearcast
