// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Advice.h"

#include "lab/NearestAsRule.h"
#include "lab/Rule.h"

#include <map>

namespace nearcast::cli {

namespace {

using Levels = std::map<std::string, double, std::less<>>;

/// Adds the stays of a recording, with the levels that `nearest` compares.
void addStays(lab::Standing& standing, const JudgedRecording& recording, const NearestSettings& settings) {
    const auto stays = lab::staysOf(recording.truth, recording.playback.end);
    auto stay = stays.begin();
    bool begun = false;
    lab::NearestAsRule rule(*recording.playback.registry, settings);
    lab::tell(recording.playback, rule, [&](double at) {
        rule.nearest(at);
        while (stay != stays.end() && at >= stay->to) {
            ++stay;
            begun = false;
        }
        if (stay == stays.end() || at < stay->from) return;
        if (!std::exchange(begun, true)) standing.begin(*stay);
        Levels levels;
        for (const NearestExplanation& device : rule.explain(at)) {
            if (device.level) levels.emplace(device.MACAddr, *device.level);
        }
        standing.take(at, levels);
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

}  // namespace

std::vector<DeviceAdvice> advise(const std::vector<JudgedRecording>& recordings, const NearestSettings& settings) {
    lab::Standing standing;
    for (const JudgedRecording& recording : recordings) addStays(standing, recording, settings);
    std::map<std::string, lab::ThresholdAdvice> found;
    for (auto& one : lab::adviseThresholds(standing)) found.emplace(one.MACAddr, one);
    const auto devices = devicesOf(recordings);
    std::vector<DeviceAdvice> all;
    for (const auto& [MACAddr, dongle] : devices) {
        DeviceAdvice one{dongle.portName, dongle.threshold, {}, ""};
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

}  // namespace nearcast::cli
