// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "nearest/Decision.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace nearcast::nearest {

inline constexpr const char* barMAC = "02:00:00:00:00:0A";
inline constexpr const char* tillMAC = "02:00:00:00:00:0B";

inline SettingRecordPointer recordOf(const std::string& MACAddr, std::optional<std::int32_t> threshold = {}) {
    SettingRecord record{{std::string(kQXDongleMACAddr), MACAddr}};
    if (threshold) record.emplace(kQXThreshouldRSSI, *threshold);
    return std::make_shared<const SettingRecord>(std::move(record));
}

/// The settings that tests reckon with: round figures.
inline NearestSettings plainSettings() {
    NearestSettings settings;
    settings.hysteresis = 4;
    settings.dwell = 1;
    settings.margin = 2;
    settings.patience = 6;
    settings.closeSignal = -60;
    settings.anticipation = 0;
    settings.contrast = 100;  // leads count as they are
    settings.silence = 5;
    settings.staleFor = 30;
    return settings;
}

/// A decision between two devices, the bar's and the till's.
class DecisionBench {
public:
    /// @param threshold of both; nothing: their records have none
    explicit DecisionBench(const NearestSettings& settings = plainSettings(),
                           std::optional<std::int32_t> threshold = -60)
        : decision(settings) {
        decision.setRegistry(0, {{"Bar", recordOf(barMAC, threshold)}, {"Till", recordOf(tillMAC, threshold)}});
    }

    // Reports: their level is what they say.
    void bar(double at, std::int32_t RSSI) { decision.reported(at, barMAC, RSSI); }
    void till(double at, std::int32_t RSSI) { decision.reported(at, tillMAC, RSSI); }
    /// Both are reported four times a second, from a moment to another, both included.
    void both(double from, double to, std::int32_t barRSSI, std::int32_t tillRSSI) {
        for (double at = from; at <= to; at += quarter) {
            bar(at, barRSSI);
            till(at, tillRSSI);
        }
    }
    /// The port chosen at a moment, "" for none.
    std::string at(double moment) {
        decision.pass(moment);
        return decision.chosen() == nullptr ? std::string() : decision.chosen()->portName;
    }

    static constexpr double quarter = 0.25;  // exact in binary, as are its sums
    Decision decision;
};

}  // namespace nearcast::nearest
