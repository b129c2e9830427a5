// SPDX-License-Identifier: Apache-2.0
#include "application/KeptRecords.h"

#include "settings/SavedSettings.h"

namespace nearcast {

namespace {

const SettingValue* find(const SettingRecord& record, const std::string& key) {
    const auto found = record.find(key);
    return found == record.end() ? nullptr : &found->second;
}

/// Of a key that has no saved form (a device type without a word) the file keeps nothing.
SettingRecord keptRecord(const SettingRecord& inFile, const SettingRecord& before, const SettingRecord& after) {
    const SettingRecord saved = savedRecord(after);
    SettingRecord kept;
    for (const auto& [key, value] : after) {
        const SettingValue* const old = find(before, key);
        const SettingValue* const place = old != nullptr && *old == value ? find(inFile, key) : find(saved, key);
        if (place != nullptr) kept.emplace(key, *place);
    }
    for (const auto& [key, value] : inFile) {
        if (!before.contains(key) && !after.contains(key)) kept.emplace(key, value);
    }
    return kept;
}

}  // namespace

SettingValue::Dictionary keptMembers(const SettingValue::Dictionary& members, const Settings& before,
                                     const Settings& after) {
    SettingValue::Dictionary kept;
    for (const auto& [portName, record] : after) {
        const SettingRecord now = record ? *record : SettingRecord();
        const auto old = before.find(portName);
        const auto inFile = members.find(portName);
        if (old == before.end() || inFile == members.end()) {
            kept.emplace_hint(kept.end(), portName, savedRecord(now));
        } else {
            kept.emplace_hint(kept.end(), portName, keptRecord(*inFile->second.as<SettingRecord>(), *old->second, now));
        }
    }
    return kept;
}

}  // namespace nearcast
