// SPDX-License-Identifier: Apache-2.0
#include "contract/RadioBench.h"

#include "doubles/TemporaryFolder.h"
#include "doubles/hci/FakeHci.h"
#include "lines/Line.h"
#include "platform/hci/HciRadio.h"
#include "platform/replay/ReplayPlatform.h"
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorPlatform.h"
#include "platform/virtual/VirtualPlatform.h"

#include <algorithm>

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

constexpr auto lost = 20s;
constexpr auto back = 30s;
constexpr auto advertisingInterval = 100ms;

class TimelineBench : public RadioBench {
public:
    void pass(std::chrono::seconds duration) override {
        Timeline& timeline = platform_->timeline();
        const auto target = timeline.now() + duration;
        while (timeline.runUntil(target) != Timeline::End::reached) {
        }
    }
};

/// The virtual radio does nothing by itself; timers of the bench make it hear.
class VirtualBench : public TimelineBench {
public:
    VirtualBench() {
        auto platform = std::make_unique<VirtualPlatform>(console, JSON);
        radio_ = platform->centralManager(calls);
        VirtualRadio& radio = *platform->radio();
        dongle_ = platform->scheduledTimer(advertisingInterval, [&radio](NSTimer&) {
            AdvertisingReport report;
            report.manufacturerData = {{0xFF, 0xFF, 2, 0, 0, 0, 0, 1}};
            report.services = {dongleService};
            report.RSSI = -60;
            radio.advertise(report);
        });
        adapter_ = platform->scheduledTimer(10s, [&radio, fired = 0](NSTimer&) mutable {
            ++fired;
            if (fired * 10s == lost) radio.setState(CBManagerStatePoweredOff);
            if (fired * 10s == back) radio.setState(CBManagerStatePoweredOn);
        });
        platform_ = std::move(platform);
    }
    ~VirtualBench() override {
        dongle_->invalidate();
        adapter_->invalidate();
    }

private:
    std::shared_ptr<NSTimer> dongle_;
    std::shared_ptr<NSTimer> adapter_;
};

std::string recording() {
    std::string lines;
    for (auto at = 100ms; at <= 60s; at += advertisingInterval) {
        lines::Advertise advertise;
        advertise.manufacturerData = {{0xFF, 0xFF, 2, 0, 0, 0, 0, 1}};
        advertise.RSSI = -60;
        lines += lines::writeLine({at, advertise}) + "\n";
        if (at == lost) lines += lines::writeLine({at, lines::RadioState{CBManagerStatePoweredOff}}) + "\n";
        if (at == back) lines += lines::writeLine({at, lines::RadioState{CBManagerStatePoweredOn}}) + "\n";
    }
    return lines;
}

class ReplayBench : public TimelineBench {
public:
    ReplayBench() {
        replay::ReplayOptions options;
        options.path = folder_.write("recording.jsonl", recording());
        auto platform = std::make_unique<replay::ReplayPlatform>(console, JSON, nullptr, options);
        radio_ = platform->centralManager(calls);
        platform_ = std::move(platform);
    }

private:
    const TemporaryFolder folder_;
};

constexpr const char* benchScene = R"json({
    "floor": {"width": 10, "depth": 10},
    "user": {"path": [{"at": [5, 5]}]},
    "air": {"loss": 0},
    "dongles": [{"address": "02:00:00:00:00:01", "at": [5, 6], "txPower": 0, "interval": 0.1}],
    "radio": [{"at": 20, "state": "poweredOff"}, {"at": 30, "state": "poweredOn"}]
})json";

class SimulatorBench : public TimelineBench {
public:
    SimulatorBench() {
        auto platform = std::make_unique<simulator::SimulatorPlatform>(
            console, JSON, nullptr, simulator::readScene(benchScene, "the bench's scene"));
        radio_ = platform->centralManager(calls);
        platform_ = std::move(platform);
    }
};

/// Has neither a thread nor a radio of its own: the radio is run where a thread would run it.
class BarePlatform : public TimelinePlatform {
public:
    using TimelinePlatform::TimelinePlatform;
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& /*delegate*/) override {
        return nullptr;
    }
};

/// A radio that is run by the timeline.
class TimelineHciRadio : private hci::RadioParts, public hci::HciRadio, public TimelineSource {
public:
    TimelineHciRadio(CBCentralManagerDelegate& delegate, Console& console, TimelinePlatform& platform,
                     const hci::FakeHci& machine, hci::HciAccess access)
        : RadioParts{machine.port(), {}, {}},
          HciRadio(delegate, console, platform.monitor(), *port, nullptr, hci::HciTarget{.access = access},
                   [this] { wake(); }),
          machine_(machine),
          timeline_(platform.timeline()) {
        timeline_.setSource(this);
        pass(timeline_.now());
    }
    ~TimelineHciRadio() override { timeline_.setSource(nullptr); }
    TimelineHciRadio(const TimelineHciRadio&) = delete;
    TimelineHciRadio& operator=(const TimelineHciRadio&) = delete;

    std::optional<std::chrono::microseconds> due() override {
        if (scanAsked_ || machine_.waits()) return timeline_.now();
        return std::chrono::ceil<std::chrono::microseconds>(*HciRadio::due());
    }
    void happen() override {
        scanAsked_ = false;
        pass(timeline_.now());
    }

private:
    void wake() {
        scanAsked_ = true;
        timeline_.sourceChanged();
    }

    const hci::FakeHci& machine_;
    Timeline& timeline_;
    bool scanAsked_ = false;
};

LegacyReport benchAdvertisement() {
    // The service's octets come last one first.
    return {.data = hex("11 07 DFCA7199709EE0980C44433F06D9374F  09 FF FFFF 020000000001"), .RSSI = -60};
}

class HciBench : public TimelineBench {
public:
    explicit HciBench(hci::HciAccess access) {
        auto platform = std::make_unique<BarePlatform>(console, JSON, nullptr);
        if (access == hci::HciAccess::beside) {
            machine_.use(true);
            machine_.othersScan(true);
        }
        radio_ = std::make_unique<TimelineHciRadio>(calls, console, *platform, machine_, access);
        calls.states.clear();  // that of the start
        dongle_ = platform->scheduledTimer(advertisingInterval,
                                           [this](NSTimer&) { machine_.advertise(benchAdvertisement()); });
        adapter_ = platform->scheduledTimer(10s, [this, access, fired = 0](NSTimer&) mutable {
            ++fired;
            // Nobody else can switch off what the radio has for itself, but for a switch of the machine.
            if (fired * 10s == lost) machine_.cutOff();
            if (fired * 10s == back) {
                machine_.block({});
                machine_.use(access == hci::HciAccess::beside);
            }
        });
        platform_ = std::move(platform);
    }
    ~HciBench() override {
        dongle_->invalidate();
        adapter_->invalidate();
        radio_.reset();
    }

private:
    hci::FakeHci machine_;
    std::shared_ptr<NSTimer> dongle_;
    std::shared_ptr<NSTimer> adapter_;
};

}  // namespace

std::unique_ptr<RadioBench> virtualBench() { return std::make_unique<VirtualBench>(); }
std::unique_ptr<RadioBench> replayBench() { return std::make_unique<ReplayBench>(); }
std::unique_ptr<RadioBench> simulatorBench() { return std::make_unique<SimulatorBench>(); }
std::unique_ptr<RadioBench> hciBench() { return std::make_unique<HciBench>(hci::HciAccess::alone); }
std::unique_ptr<RadioBench> hciBesideBench() { return std::make_unique<HciBench>(hci::HciAccess::beside); }

}  // namespace nearcast::contract
