// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Device.h>

#include "support/Number.h"

#include <memory>
#include <utility>

namespace nearcast {

namespace {

/// What the manager writes in place of a nick name that was not given.
constexpr std::string_view noNickName = "(null)";

SettingRecordPointer with(const SettingRecord& record, std::string_view key, SettingValue value) {
    SettingRecord copy = record;
    copy.insert_or_assign(std::string(key), std::move(value));
    return std::make_shared<const SettingRecord>(std::move(copy));
}

SettingRecordPointer without(const SettingRecord& record, std::string_view key) {
    SettingRecord copy = record;
    if (const auto found = copy.find(key); found != copy.end()) copy.erase(found);
    return std::make_shared<const SettingRecord>(std::move(copy));
}

template <class T>
const T* find(const SettingRecord& record, std::string_view key) {
    const auto found = record.find(key);
    return found == record.end() ? nullptr : found->second.as<T>();
}

std::optional<std::string> textOf(const SettingRecord& record, std::string_view key) {
    const auto* const text = find<std::string>(record, key);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

}  // namespace

void addDevice(QXNearcastManager& manager, const Device& device) {
    const auto view = [](const std::optional<std::string>& text) { return QXNearcastManager::Text(text); };
    const std::string& address = device.address.text();
    if (device.kind == Device::Kind::printer) {
        manager.addSettingForPrinterPortName(device.portName, view(device.portSettings), device.useDrawer, address,
                                             device.threshold, view(device.nickName));
    } else {
        manager.addSettingForTFTillfoxPortName(device.portName, view(device.portSettings), address, device.threshold,
                                               view(device.nickName));
    }
}

SettingRecordPointer withAddress(const SettingRecord& record, const Address& address) {
    return with(record, kQXDongleMACAddr, address.text());
}

SettingRecordPointer withDrawer(const SettingRecord& record, bool useDrawer) {
    return with(record, kQXWithDrawer, useDrawer);
}

SettingRecordPointer withPortSettings(const SettingRecord& record, const std::optional<std::string>& portSettings) {
    return portSettings ? with(record, kQXPortSettings, *portSettings) : without(record, kQXPortSettings);
}

SettingRecordPointer withThreshold(const SettingRecord& record, std::optional<double> threshold) {
    return threshold ? with(record, kQXThreshouldRSSI, int32FromNumber(*threshold))
                     : without(record, kQXThreshouldRSSI);
}

SettingRecordPointer withNickName(const SettingRecord& record, const std::optional<std::string>& nickName) {
    return with(record, kQXNickName, nickName ? std::string_view(*nickName) : noNickName);
}

std::optional<Address> addressOf(const SettingRecord& record) {
    auto text = textOf(record, kQXDongleMACAddr);
    return text ? std::optional(Address::asHeard(*std::move(text))) : std::nullopt;
}

std::optional<double> thresholdOf(const SettingRecord& record) {
    if (const auto* whole = find<std::int64_t>(record, kQXThreshouldRSSI)) return static_cast<double>(*whole);
    if (const auto* number = find<double>(record, kQXThreshouldRSSI)) return *number;
    return std::nullopt;
}

std::optional<std::string> nickNameOf(const SettingRecord& record) {
    auto text = textOf(record, kQXNickName);
    return text == noNickName ? std::nullopt : text;
}

std::optional<std::string> portSettingsOf(const SettingRecord& record) { return textOf(record, kQXPortSettings); }

bool changeDevice(QXNearcastManager& manager, std::string_view portName,
                  const std::function<SettingRecordPointer(const SettingRecord& record)>& change) {
    const auto registry = manager.getSettings();
    if (registry == nullptr) return false;
    const auto found = registry->find(portName);
    if (found == registry->end()) return false;
    Settings changed = *registry;
    changed.insert_or_assign(found->first, change(found->second ? *found->second : SettingRecord()));
    manager.setSettings(std::move(changed));
    return true;
}

}  // namespace nearcast
