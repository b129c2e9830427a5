// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Advice.h"

#include "common/JSONText.h"
#include "common/Words.h"
#include "evaluate/Figures.h"
#include "lab/NearestAsRule.h"
#include "lab/Rule.h"

#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace nearcast::cli {

namespace {

using Levels = std::map<std::string, double, std::less<>>;

/// Finds the samples of each stay.
class StaySorter {
public:
    StaySorter(lab::Standing& standing, std::vector<lab::Stay> stays) : standing_(standing), stays_(std::move(stays)) {}

    /// @param levels asked for the levels at these samples where a stay has any of them
    void take(lab::Samples samples, const std::function<Levels()>& levels) {
        std::optional<Levels> heard;
        while (samples.count != 0 && next_ != stays_.size()) {
            const lab::Stay& stay = stays_[next_];
            samples.drop(samples.countBefore(stay.from));
            if (const std::uint64_t count = samples.countBefore(stay.to); count != 0) {
                if (!std::exchange(begun_, true)) standing_.begin(stay);
                if (!heard) heard = levels();
                standing_.take({samples.first, count}, *heard);
                samples.drop(count);
            }
            if (samples.count == 0) return;
            ++next_;
            begun_ = false;
        }
    }

private:
    lab::Standing& standing_;
    const std::vector<lab::Stay> stays_;
    std::size_t next_ = 0;
    bool begun_ = false;
};

/// Adds the stays of a recording, with the levels that `nearest` compares.
void addStays(lab::Standing& standing, const JudgedRecording& recording, const NearestSettings& settings) {
    StaySorter sorter(standing, lab::staysOf(recording.truth, recording.playback.end));
    lab::NearestAsRule rule(*recording.playback.registry, settings);
    lab::tell(recording.playback, rule, [&](const lab::Samples& samples) {
        rule.nearest(samples.to());
        sorter.take(samples, [&] {
            Levels levels;
            for (const NearestExplanation& device : rule.explain(samples.to())) {
                if (device.level) levels.emplace(device.MACAddr, *device.level);
            }
            return levels;
        });
    });
}

std::map<std::string, lab::PlaybackDongle> devicesOf(const std::vector<JudgedRecording>& recordings) {
    std::map<std::string, lab::PlaybackDongle> devices;
    for (const JudgedRecording& recording : recordings) {
        for (const lab::PlaybackDongle& dongle : recording.playback.dongles) {
            if (!dongle.portName.empty()) devices.emplace(dongle.MACAddr, dongle);
        }
    }
    return devices;
}

std::string decibels(std::optional<std::int32_t> value) { return value ? std::to_string(*value) : std::string("-"); }

/// What the table cannot say about a device; empty where it says all.
std::string remark(const DeviceAdvice& one) {
    const lab::ThresholdAdvice& advice = one.advice;
    if (advice.inseparable()) {
        const std::string other = one.mistakenAt.empty() ? "the rest" : printable(one.mistakenAt);
        return "cannot be told apart from " + other + ": " + percent(advice.errorThere()) + " % error";
    }
    if (advice.threshold) return "";
    if (advice.stays == 0) return "no threshold: the user did not stand at it for long enough";
    if (!advice.elsewhere) return "no threshold: the user stood nowhere else for long enough";
    return "no threshold: it was not heard while the user stood anywhere";
}

JSON asJSON(const DeviceAdvice& one) {
    const lab::ThresholdAdvice& advice = one.advice;
    JSON result = {{"portName", one.portName}, {"MACAddr", advice.MACAddr}};
    result["present"] = one.present ? JSON(*one.present) : JSON();
    result["threshold"] = advice.threshold ? JSON(*advice.threshold) : JSON();
    result["stays"] = advice.stays;
    if (advice.threshold) {
        result["validatedBy"] = advice.byHalves ? "halves" : "stays";
        result["missedPercent"] = percentJSON(advice.missed);
        result["intrudingPercent"] = percentJSON(advice.intruding);
        result["errorPercent"] = percentJSON(advice.error());
        result["mistakenAt"] = one.mistakenAt.empty() ? JSON() : JSON(one.mistakenAt);
        result["errorTherePercent"] = percentJSON(advice.errorThere());
        result["inseparable"] = advice.inseparable();
    }
    return result;
}

}  // namespace

std::vector<DeviceAdvice> advise(const std::vector<JudgedRecording>& recordings, const NearestSettings& settings) {
    lab::Standing standing;
    for (const JudgedRecording& recording : recordings) addStays(standing, recording, settings);
    std::map<std::string, lab::ThresholdAdvice> found;
    for (auto& one : lab::adviseThresholds(standing)) found.emplace(one.MACAddr, one);
    const auto devices = devicesOf(recordings);
    std::vector<DeviceAdvice> all;
    for (const auto& [MACAddr, dongle] : devices) {
        DeviceAdvice one;
        one.portName = dongle.portName;
        one.present = dongle.threshold;
        one.advice.MACAddr = MACAddr;
        if (const auto known = found.find(MACAddr); known != found.end()) one.advice = known->second;
        if (const auto other = devices.find(one.advice.mistakenAt); other != devices.end()) {
            one.mistakenAt = other->second.portName;
        }
        all.push_back(std::move(one));
    }
    return all;
}

Settings withThresholds(const Settings& registry, const std::vector<DeviceAdvice>& advice) {
    Settings changed = registry;
    for (const DeviceAdvice& one : advice) {
        const auto record = changed.find(one.portName);
        if (!one.advice.threshold || record == changed.end()) continue;
        SettingRecord copy = *record->second;
        copy.insert_or_assign(std::string(kQXThreshouldRSSI), *one.advice.threshold);
        record->second = std::make_shared<const SettingRecord>(std::move(copy));
    }
    return changed;
}

std::string textOf(const std::vector<DeviceAdvice>& advice) {
    Table table(
        {"device", "present dBm", "threshold dBm", "outside at it %", "inside elsewhere %", "error %", "stays"});
    std::string remarks;
    for (const DeviceAdvice& one : advice) {
        const bool found = one.advice.threshold.has_value();
        const auto shown = [found](double share) { return found ? percent(share) : std::string("-"); };
        table.add({printable(one.portName), decibels(one.present), decibels(one.advice.threshold),
                   shown(one.advice.missed), shown(one.advice.intruding), shown(one.advice.error()),
                   std::to_string(one.advice.stays)});
        if (const std::string text = remark(one); !text.empty())
            remarks += printable(one.portName) + ": " + text + "\n";
    }
    return table.text() + (remarks.empty() ? "" : "\n" + remarks);
}

std::string JSONOf(const std::vector<DeviceAdvice>& advice, const NearestSettings& settings) {
    JSON result = {{"settings", settingsJSON(settings)}, {"devices", JSON::array()}};
    for (const DeviceAdvice& one : advice) result["devices"].push_back(asJSON(one));
    return textOf(result) + "\n";
}

}  // namespace nearcast::cli
