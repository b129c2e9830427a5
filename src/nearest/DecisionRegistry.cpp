// SPDX-License-Identifier: Apache-2.0
#include "nearest/Decision.h"

#include <algorithm>
#include <utility>

namespace nearcast::nearest {

namespace {

std::string textIn(const SettingRecord& record, std::string_view key) {
    const auto value = record.find(key);
    const auto* text = value == record.end() ? nullptr : value->second.as<std::string>();
    return text == nullptr ? std::string() : *text;
}

/// What is known of the device from what was heard.
void adopt(Device& device, const Device& known) {
    Device merged = known;
    merged.threshold = device.threshold;
    device = std::move(merged);
}

}  // namespace

Device Decision::fromRecord(const std::string& portName, const SettingRecord& record) const {
    Device device;
    device.portName = portName;
    device.MACAddr = textIn(record, kQXDongleMACAddr);
    const auto threshold = record.find(kQXThreshouldRSSI);
    device.threshold = threshold == record.end() ? settings_.defaultThreshold : threshold->second.intValue();
    return device;
}

void Decision::setRegistry(double at, const Settings& registry) {
    const double now = advance(at);
    const std::optional<Device> last = present_ == none ? std::nullopt : std::optional(devices_[present_]);
    const std::optional<Device> missed = missed_ ? std::optional(devices_[missed_->device]) : std::nullopt;
    const auto before = std::exchange(devices_, {});
    const auto known = std::exchange(byAddress_, {});
    devices_.reserve(registry.size());
    audible_.clear();
    for (const auto& [portName, record] : registry) {
        if (record == nullptr) continue;
        Device device = fromRecord(portName, *record);
        const auto same = known.find(device.MACAddr);
        const bool first = byAddress_.try_emplace(device.MACAddr, devices_.size()).second;
        if (first && same != known.end() && before[same->second].portName == portName) {
            adopt(device, before[same->second]);
            device.settle(now, settings_);
        }
        if (device.level) audible_.push_back(devices_.size());
        devices_.push_back(std::move(device));
    }
    restoreMissed(missed);
    restoreChoice(now, last);
}

void Decision::restoreMissed(const std::optional<Device>& missed) {
    if (!missed) return;
    const Device* device = find(missed->MACAddr);
    if (device != nullptr && device->portName == missed->portName) {
        missed_->device = static_cast<Index>(device - devices_.data());
    } else {
        missed_.reset();
    }
}

void Decision::restoreChoice(double at, const std::optional<Device>& last) {
    if (!last) return;
    present_ = none;
    const Device* device = find(last->MACAddr);
    if (device != nullptr && device->portName == last->portName) {
        present_ = static_cast<Index>(device - devices_.data());
    } else {
        choose(strongestInside(none, at), at, NearestRule::removed);
    }
}

}  // namespace nearcast::nearest
