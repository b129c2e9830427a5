// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/KeptLines.h"
#include "lines/Line.h"
#include "platform/CBCentralManager.h"
#include "platform/radio/AdvertisingReport.h"
#include "platform/replay/RecordingReader.h"
#include "platform/timeline/Timeline.h"
#include "support/Dongle.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast::replay {

/// What a radio delivered, and when.
struct Delivery {
    std::int64_t at = 0;  ///< microseconds of the timeline
    std::optional<std::string> name;
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::int32_t RSSI = 0;
    bool operator==(const Delivery&) const = default;
};

/// Keeps what a radio delivers.
class Listener : public CBCentralManagerDelegate {
public:
    explicit Listener(Timeline& timeline) : timeline_(timeline) {}

    void centralManagerDidUpdateState(CBCentralManager& central) override {
        states.emplace_back(timeline_.now().count(), central.state());
    }
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& peripheral,
                                             const AdvertisementData& data, std::int32_t RSSI) override {
        Delivery delivery;
        delivery.at = timeline_.now().count();
        delivery.RSSI = RSSI;
        if (peripheral.name) delivery.name = *peripheral.name;
        if (data.manufacturerData) {
            delivery.manufacturerData.emplace(data.manufacturerData->begin(), data.manufacturerData->end());
        }
        deliveries.push_back(std::move(delivery));
        if (then) then();
    }

    std::vector<Delivery> deliveries;
    std::vector<std::pair<std::int64_t, int>> states;
    std::function<void()> then;  ///< called at the end of each delivery

private:
    Timeline& timeline_;
};

/// The signals of deliveries, which tell them apart.
inline std::vector<int> signalsOf(const std::vector<Delivery>& deliveries) {
    std::vector<int> signals;
    for (const Delivery& delivery : deliveries) signals.push_back(delivery.RSSI);
    return signals;
}

/// A recording out of nothing: the items, and then perhaps damage.
class Script : public RecordingReader {
public:
    explicit Script(std::vector<RecordedItem> items, std::string damage = {})
        : items_(items.begin(), items.end()), damage_(std::move(damage)) {}

    std::optional<RecordedItem> next() override {
        if (items_.empty() && !damage_.empty()) throw RecordingDamage(77, std::exchange(damage_, {}));
        if (items_.empty()) return std::nullopt;
        RecordedItem item = std::move(items_.front());
        items_.pop_front();
        return item;
    }

private:
    std::deque<RecordedItem> items_;
    std::string damage_;
};

inline CBUUID dongleUUID() { return CBUUID::UUIDWithString(dongle::serviceUUID); }

/// A report of a dongle.
inline RecordedReport dongleReport(std::int64_t microseconds, std::int32_t RSSI) {
    RecordedReport report;
    report.at = std::chrono::microseconds(microseconds);
    report.report.services = {dongleUUID()};
    report.report.RSSI = RSSI;
    return report;
}

}  // namespace nearcast::replay
