// SPDX-License-Identifier: Apache-2.0
#include "doubles/Journal.h"
#include "doubles/ManagerBench.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Dongle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <semaphore>
#include <thread>
#include <utility>

namespace nearcast {
namespace {

using namespace std::chrono_literals;

/// What happens while a radio takes its time, each thing once.
struct Meanwhile {
    std::function<void()> beforeStop;
    std::function<void()> afterStop;
    std::function<void()> beforeScan;
    std::function<void()> afterScan;

    static void happen(std::function<void()>& what) {
        if (const auto once = std::exchange(what, nullptr)) once();
    }
};

class SlowRadio : public CBCentralManager {
public:
    SlowRadio(std::unique_ptr<CBCentralManager> inner, Meanwhile& meanwhile)
        : inner_(std::move(inner)), meanwhile_(meanwhile) {}

    [[nodiscard]] CBManagerState state() const override { return inner_->state(); }
    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                        ScanOptions options) override {
        Meanwhile::happen(meanwhile_.beforeScan);
        inner_->scanForPeripheralsWithServices(services, options);
        Meanwhile::happen(meanwhile_.afterScan);
    }
    void stopScan(StopOptions options) override {
        Meanwhile::happen(meanwhile_.beforeStop);
        inner_->stopScan(options);
        Meanwhile::happen(meanwhile_.afterStop);
    }

private:
    std::unique_ptr<CBCentralManager> inner_;
    Meanwhile& meanwhile_;
};

class SlowPlatform : public VirtualPlatform {
public:
    using VirtualPlatform::VirtualPlatform;
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        return std::make_unique<SlowRadio>(VirtualPlatform::centralManager(delegate), meanwhile);
    }
    Meanwhile meanwhile;
};

/// A scan whose restart is due at the next `restart`.
class Restart : public testing::Test {
protected:
    Restart() {
        manager_.init();
        manager_.startScan();
    }
    ~Restart() override {
        platform_.meanwhile = {};
        manager_.stopScan();
    }
    Restart(const Restart&) = delete;
    Restart& operator=(const Restart&) = delete;

    void restart() { platform_.timeline().sleep(120s); }
    [[nodiscard]] bool scanning() { return platform_.radio()->scanning(); }
    Meanwhile& meanwhile() { return platform_.meanwhile; }
    /// Whether what carries that service is reported.
    bool hears(const char* service) {
        int heard = 0;
        platform_.monitor().setTap([&](const AdvertisingReport&, NSDate, bool wanted) { heard += wanted ? 1 : 0; });
        AdvertisingReport report;
        report.services.push_back(CBUUID::UUIDWithString(service));
        platform_.radio()->advertise(report);
        platform_.monitor().setTap({});
        return heard == 1;
    }

    doubles::Journal journal_;
    const JSONSerialization JSON_{};
    SlowPlatform platform_{journal_, JSON_, &journal_};
    Manager manager_{this, platform_};
};

TEST_F(Restart, DoesNotOutliveAStopThatComesWhileTheRadioIsSlowToStop) {
    meanwhile().beforeStop = [&] { manager_.stopScan(); };
    restart();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, DoesNotOutliveAStopThatComesBetweenItsStopAndItsScan) {
    meanwhile().afterStop = [&] { manager_.stopScan(); };
    restart();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, DoesNotOutliveAStopThatComesWhileTheRadioIsSlowToScan) {
    meanwhile().beforeScan = [&] { manager_.stopScan(); };
    restart();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, IsEndedByAStopThatComesAfterItsScan) {
    meanwhile().afterScan = [&] { manager_.stopScan(); };
    restart();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, WhoseScanComesBetweenTheStepsOfAStopDoesNotOutliveIt) {
    std::binary_semaphore about(0);
    std::binary_semaphore go(0);
    std::binary_semaphore scanned(0);
    meanwhile().beforeScan = [&] {
        about.release();
        go.acquire();
    };
    meanwhile().afterScan = [&] { scanned.release(); };
    std::thread timers([&] { restart(); });
    about.acquire();
    meanwhile().afterStop = [&] {
        go.release();
        scanned.acquire();
    };
    manager_.stopScan();
    timers.join();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, OfAScanThatWasStoppedLeavesTheNextScanRunning) {
    for (auto* const moment : {&meanwhile().beforeStop, &meanwhile().afterStop, &meanwhile().beforeScan}) {
        *moment = [&] {
            manager_.stopScan();
            manager_.startScan();
        };
        restart();
        EXPECT_TRUE(scanning());
        EXPECT_TRUE(hears(dongle::serviceUUID.data()));
        manager_.stopScan();
        EXPECT_FALSE(scanning());
        manager_.startScan();
    }
}

TEST_F(Restart, OfAScanThatWasStoppedStopsNoOtherOnItsWay) {
    bool between = false;
    meanwhile().beforeStop = [&] {
        manager_.stopScan();
        manager_.startScan();
        meanwhile().afterStop = [&] { between = scanning(); };
    };
    restart();
    EXPECT_TRUE(between);
}

TEST_F(Restart, OfAScanThatWasStoppedDoesNotGiveACalibrationItsFilter) {
    bool hearsAll = false;
    meanwhile().beforeScan = [&] {
        manager_.stopScan();
        platform_.radio()->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    };
    meanwhile().afterScan = [&] { hearsAll = hears("180F"); };
    restart();
    EXPECT_TRUE(hearsAll);
}

TEST_F(Restart, OfTheFirstOfTwoScansThatWereStoppedIsDroppedToo) {
    meanwhile().beforeScan = [&] {
        manager_.stopScan();
        manager_.startScan();
        manager_.stopScan();
    };
    restart();
    EXPECT_FALSE(scanning());
}

TEST_F(Restart, AsksTheRadioTheSameThingsWhetherItIsDroppedOrNot) {
    journal_.clear();
    restart();
    const auto kept = journal_.lines();
    journal_.clear();
    meanwhile().beforeStop = [&] {
        manager_.stopScan();
        journal_.clear();
    };
    restart();
    EXPECT_EQ(journal_.lines(), kept);
}

}  // namespace
}  // namespace nearcast
