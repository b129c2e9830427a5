// SPDX-License-Identifier: Apache-2.0
#include "common/files/SettingsCheck.h"

#include "settings/SavedSettings.h"
#include "support/AddressText.h"
#include "support/Utf8.h"

#include <map>
#include <optional>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr double weakest = -127;  // dBm: what a reading of a signal may be
constexpr double strongest = 20;
constexpr std::size_t longestShown = 60;  // characters of a text that somebody wrote into the file

std::string inQuotes(std::string_view text) {
    const std::string_view shown = characters(text, 0, longestShown);
    return "\"" + std::string(shown) + (shown.size() < text.size() ? "...\"" : "\"");
}

std::optional<double> numberIn(const SettingValue& value) {
    if (const auto* number = value.as<std::int64_t>()) return static_cast<double>(*number);
    if (const auto* number = value.as<std::uint64_t>()) return static_cast<double>(*number);
    if (const auto* number = value.as<double>()) return *number;
    return std::nullopt;
}

class Check {
public:
    void look(const std::string& device, const SettingRecord& record) {
        device_ = &device;
        lookAtAddress(record);
        if (const auto threshold = record.find(kQXThreshouldRSSI); threshold != record.end()) {
            lookAtThreshold(threshold->second);
        }
        if (const auto type = record.find(kQXDeviceType); type != record.end()) lookAtType(type->second);
    }

    [[nodiscard]] std::vector<SettingsFinding> findings() && { return std::move(findings_); }

private:
    void add(std::string_view member, std::string text) { findings_.push_back({*device_, member, std::move(text)}); }

    void lookAtAddress(const SettingRecord& record) {
        const auto found = record.find(kQXDongleMACAddr);
        const auto* address = found == record.end() ? nullptr : found->second.as<std::string>();
        if (address == nullptr) {
            return add(kQXDongleMACAddr, found == record.end() ? "is missing: no dongle stands for the device"
                                                               : "is no text: no dongle stands for the device");
        }
        if (packedAddress(*address) == noAddress) {
            add(kQXDongleMACAddr, inQuotes(*address) +
                                      " matches only a dongle heard by this very spelling; dongles are heard as six "
                                      "upper-case octets with colons, as in 00:11:22:AA:BB:CC");
        }
        const auto [first, isNew] = owners_.emplace(*address, device_);
        if (!isNew) add(kQXDongleMACAddr, inQuotes(*address) + " is that of " + inQuotes(*first->second) + " too");
    }

    void lookAtThreshold(const SettingValue& value) {
        const auto number = numberIn(value);
        if (!number) return add(kQXThreshouldRSSI, "is no number");
        if (*number >= weakest && *number <= strongest) return;
        add(kQXThreshouldRSSI, "is outside -127 to 20 dBm, which signals have");
    }

    void lookAtType(const SettingValue& value) {
        const auto* word = value.as<std::string>();
        if (word == nullptr || isDeviceType(*word)) return;
        add(kQXDeviceType, inQuotes(*word) + " is unknown, and passed over; known: \"Printer\", \"TF-Tillfox\"");
    }

    const std::string* device_ = nullptr;
    std::map<std::string_view, const std::string*> owners_;
    std::vector<SettingsFinding> findings_;
};

}  // namespace

std::string SettingsFinding::inFile(const std::string& path) const {
    return path + ": " + inQuotes(device) + ": " + std::string(member) + " " + text;
}

std::vector<SettingsFinding> checkSettings(const SettingValue& file) {
    Check check;
    const auto* devices = file.as<SettingValue::Dictionary>();
    if (devices == nullptr) return {};
    for (const auto& [device, value] : *devices) {
        if (const auto* record = value.as<SettingRecord>()) check.look(device, *record);
    }
    return std::move(check).findings();
}

}  // namespace nearcast::cli
