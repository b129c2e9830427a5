// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/SimulatorPlatform.h"
#include "support/Dongle.h"
#include "unit/platform/simulator/SimulatorFixture.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::simulator {

/// Remembers the lines.
class LineConsole : public Console {
public:
    void NSLog(std::string_view line) noexcept override { lines.emplace_back(line); }
    std::vector<std::string> lines;
};

/// One report as the manager gets it, with the timeline's time.
struct Report {
    std::int64_t at = 0;  ///< microseconds
    std::string name;     ///< "" where it has none
    std::vector<std::uint8_t> manufacturerData;
    std::int32_t RSSI = 0;
    friend bool operator==(const Report&, const Report&) = default;
};

/// Remembers what a radio says.
class Listener : public CBCentralManagerDelegate {
public:
    explicit Listener(const Timeline& timeline) : timeline_(timeline) {}

    void centralManagerDidUpdateState(CBCentralManager& central) override {
        states.emplace_back(timeline_.now().count(), central.state());
    }
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& peripheral,
                                             const AdvertisementData& data, std::int32_t RSSI) override {
        Report report{timeline_.now().count(), std::string(peripheral.name.value_or("")), {}, RSSI};
        if (data.manufacturerData) {
            report.manufacturerData.assign(data.manufacturerData->begin(), data.manufacturerData->end());
        }
        reports.push_back(report);
        if (onReport) onReport();
    }

    std::vector<Report> reports;
    std::vector<std::pair<std::int64_t, CBManagerState>> states;
    std::function<void()> onReport;

private:
    const Timeline& timeline_;
};

/// A radio in a scene on a timeline that the test drives.
struct RadioBench {
    explicit RadioBench(Scene scene) : radio(listener, console, monitor, *timeline, std::move(scene)) {}

    void scan(ScanOptions options = {.allowDuplicates = true}) {
        radio.scanForPeripheralsWithServices(std::vector{CBUUID::UUIDWithString(dongle::serviceUUID)}, options);
    }
    Timeline::End runUntil(double seconds) {
        return timeline->runUntil(Timeline::Time(static_cast<std::int64_t>(seconds * 1e6)));
    }

    LineConsole console;
    std::shared_ptr<Timeline> timeline = std::make_shared<Timeline>(console);
    Listener listener{*timeline};
    RadioMonitor monitor{console, [this] { return NSDate(timeline->now()); }};
    SimulatorRadio radio;
};

}  // namespace nearcast::simulator
