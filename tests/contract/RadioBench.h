// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/KeptLines.h"
#include "platform/CBCentralManager.h"
#include "platform/json/JSONSerialization.h"
#include "platform/timeline/TimelinePlatform.h"
#include "support/Dongle.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace nearcast::contract {

/// The service that every bench's dongle advertises, and one that none does.
inline const CBUUID dongleService = CBUUID::UUIDWithString(dongle::serviceUUID);
inline const CBUUID otherService = CBUUID::UUIDWithString("180F");

/// Keeps what a radio tells; `onReport` runs inside each report.
class KeptCalls : public CBCentralManagerDelegate {
public:
    void centralManagerDidUpdateState(CBCentralManager& central) override { states.push_back(central.state()); }
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& data, std::int32_t RSSI) override {
        ++reports;
        lastRSSI = RSSI;
        lastPayload.clear();
        if (data.manufacturerData) lastPayload.assign(data.manufacturerData->begin(), data.manufacturerData->end());
        if (onReport) onReport();
    }

    int reports = 0;
    std::int32_t lastRSSI = 0;
    std::vector<std::uint8_t> lastPayload;
    std::vector<CBManagerState> states;
    std::function<void()> onReport;
};

/// One back end on a bench: a dongle with the address 02:00:00:00:00:01 advertises ten times a second or so for ever,
/// and the adapter is lost at 20 s and back at 30 s.
class RadioBench {
public:
    virtual ~RadioBench() = default;

    CBCentralManager& radio() { return *radio_; }
    RadioMonitor& monitor() { return platform_->monitor(); }
    /// Lets time pass, and the dongle advertise.
    virtual void pass(std::chrono::seconds duration) = 0;

    KeptLines console;
    KeptCalls calls;
    const JSONSerialization JSON{};

protected:
    std::unique_ptr<TimelinePlatform> platform_;
    std::unique_ptr<CBCentralManager> radio_;
};

std::unique_ptr<RadioBench> virtualBench();
std::unique_ptr<RadioBench> replayBench();
std::unique_ptr<RadioBench> simulatorBench();
std::unique_ptr<RadioBench> hciBench();
std::unique_ptr<RadioBench> hciBesideBench();
std::unique_ptr<RadioBench> bluezBench();
/// A bluetoothd that takes its time: each answer may find that something else is wanted by now.
std::unique_ptr<RadioBench> lateBluezBench();

}  // namespace nearcast::contract
