// SPDX-License-Identifier: Apache-2.0
#include "settings/Registry.h"

#include <utility>

namespace nearcast {

namespace {

/// The address text of a record, or null where it has none.
const std::string* addressOf(const SettingRecord& record) {
    const auto address = record.find(kQXDongleMACAddr);
    return address == record.end() ? nullptr : address->second.as<std::string>();
}

std::int32_t deviceTypeIn(const SettingRecord& record) {
    const auto deviceType = record.find(kQXDeviceType);
    return deviceType == record.end() ? 0 : deviceType->second.intValue();
}

RegisteredPort makePort(const std::string& portName, const SettingRecord& record) {
    return {SharedText(portName), deviceTypeIn(record)};
}

}  // namespace

Registry::Registry(Settings records) : records_(std::move(records)) {
    for (auto& [portName, record] : records_) {
        if (record == nullptr) record = std::make_shared<const SettingRecord>();
        enterIndex(portName, *record);
    }
}

std::int32_t Registry::deviceTypeOf(std::string_view portName) const {
    const auto record = records_.find(portName);
    return record == records_.end() ? 0 : deviceTypeIn(*record->second);
}

void Registry::insert(std::string_view portName, SettingRecordPointer record) {
    if (contains(portName)) return replace(portName, std::move(record));
    Settings added;
    const auto place = added.emplace(portName, std::move(record)).first;
    enterIndex(place->first, *place->second);
    records_.insert(added.extract(place));  // takes no memory, so that no record can be without its entry
    ++changes_;
}

/// Only threads that raced with each other bring a port name that is there.
void Registry::replace(std::string_view portName, SettingRecordPointer record) {
    Settings records = records_;
    records.insert_or_assign(std::string(portName), std::move(record));
    Registry replaced(std::move(records));
    swap(replaced);
}

bool Registry::remove(std::string_view portName) {
    const auto record = records_.find(portName);
    if (record == records_.end()) return false;
    leaveIndex(record->first, *record->second);
    records_.erase(record);
    ++changes_;
    return true;
}

void Registry::swap(Registry& other) noexcept {
    records_.swap(other.records_);
    index_.swap(other.index_);
    std::swap(names_, other.names_);
    std::swap(hidden_, other.hidden_);
    ++changes_;
    ++other.changes_;
}

void Registry::enterIndex(const std::string& portName, const SettingRecord& record) {
    const std::string* const address = addressOf(record);
    if (address == nullptr) return;
    RegisteredPort port = makePort(portName, record);
    index_.makeRoom();
    const PackedAddress number = names_.enter(AddressKey(*address));  // the last that can fail
    const RegisteredPort* const first = index_.find(number);
    if (first != nullptr) ++hidden_;
    if (first == nullptr || portName < first->name.view()) index_.assign(number, std::move(port));
}

void Registry::leaveIndex(const std::string& portName, const SettingRecord& record) {
    const std::string* const address = addressOf(record);
    if (address == nullptr) return;
    const PackedAddress number = names_.find(AddressKey(*address));
    if (index_.find(number)->name.view() != portName) {
        --hidden_;
        return;
    }
    // Only a registry that was loaded, or filled by threads that raced, holds an address twice.
    if (hidden_ != 0) {
        for (const auto& [otherName, other] : records_) {
            const std::string* const text = addressOf(*other);
            if (text == nullptr || *text != *address || otherName == portName) continue;
            index_.assign(number, makePort(otherName, *other));
            --hidden_;
            return;
        }
    }
    index_.erase(number);
    names_.remove(number);
}

}  // namespace nearcast
