// SPDX-License-Identifier: Apache-2.0
#include "contract/RadioBench.h"
#include "platform/timers/TimerQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace nearcast::contract {
namespace {

using namespace std::chrono_literals;

struct BackEnd {
    const char* name;
    std::unique_ptr<RadioBench> (*make)();
};

/// What the manager may expect of every radio.
class Radio : public testing::TestWithParam<BackEnd> {
protected:
    void scan(const std::optional<std::vector<CBUUID>>& services) {
        radio().scanForPeripheralsWithServices(services, ScanOptions{.allowDuplicates = true});
    }
    void scanForDongles() { scan(std::vector{dongleService}); }
    void scanFor(const NSTimer& asker) {
        radio().scanForPeripheralsWithServices(std::vector{dongleService},
                                               ScanOptions{.allowDuplicates = true, .asker = &asker});
    }
    std::shared_ptr<NSTimer> someTimer() {
        return timers_->add(
            120s, [](NSTimer&) {}, 0s);
    }
    CBCentralManager& radio() { return bench_->radio(); }
    KeptCalls& calls() { return bench_->calls; }
    void pass(std::chrono::seconds duration) { bench_->pass(duration); }

    const std::unique_ptr<RadioBench> bench_ = GetParam().make();
    const std::shared_ptr<TimerQueue> timers_ = std::make_shared<TimerQueue>();
};

TEST_P(Radio, IsPoweredOnFromTheStart) { EXPECT_EQ(radio().state(), CBManagerStatePoweredOn); }

TEST_P(Radio, ReportsNothingBeforeAScan) {
    pass(2s);
    EXPECT_EQ(calls().reports, 0);
}

TEST_P(Radio, ReportsTheSameDongleAgainAndAgain) {
    scanForDongles();
    pass(2s);
    EXPECT_GE(calls().reports, 10);
}

TEST_P(Radio, HandsThePayloadOverAsItWasOnTheAir) {
    scanForDongles();
    pass(1s);
    EXPECT_EQ(calls().lastPayload, (std::vector<std::uint8_t>{0xFF, 0xFF, 2, 0, 0, 0, 0, 1}));
    EXPECT_LT(calls().lastRSSI, 0);
    EXPECT_GT(calls().lastRSSI, -100);
}

TEST_P(Radio, FiltersByTheServicesAskedFor) {
    scan(std::vector{otherService});
    pass(2s);
    EXPECT_EQ(calls().reports, 0);
}

TEST_P(Radio, TellsTheTapOfAReportThatTheFilterHoldsBack) {
    int wanted = 0;
    int heldBack = 0;
    bench_->monitor().setTap([&](const AdvertisingReport&, NSDate, bool passes) { ++(passes ? wanted : heldBack); });
    scanForDongles();
    pass(1s);
    EXPECT_GT(wanted, 0);
    EXPECT_EQ(wanted, calls().reports);
    wanted = 0;
    scan(std::vector{otherService});
    pass(1s);
    EXPECT_EQ(wanted, 0);
    EXPECT_GT(heldBack, 0);
    bench_->monitor().setTap({});
}

TEST_P(Radio, IsContentWithOneOfSeveralServices) {
    scan(std::vector{otherService, dongleService});
    pass(2s);
    EXPECT_GE(calls().reports, 10);
}

TEST_P(Radio, ReportsEverySenderWithoutAFilter) {
    scan(std::nullopt);
    pass(2s);
    EXPECT_GE(calls().reports, 10);
}

TEST_P(Radio, ANewScanReplacesTheFilter) {
    scan(std::vector{otherService});
    pass(1s);
    scanForDongles();
    pass(1s);
    EXPECT_GE(calls().reports, 5);
}

TEST_P(Radio, ReportsNothingAfterTheStop) {
    scanForDongles();
    pass(1s);
    radio().stopScan();
    const int before = calls().reports;
    pass(2s);
    EXPECT_EQ(calls().reports, before);
}

TEST_P(Radio, ReportsAgainAfterARestart) {
    scanForDongles();
    pass(1s);
    radio().stopScan();
    pass(1s);
    const int before = calls().reports;
    scanForDongles();
    pass(1s);
    EXPECT_GE(calls().reports, before + 5);
}

TEST_P(Radio, LosesNothingByAnImmediateRestart) {
    scanForDongles();
    calls().onReport = [this] {
        radio().stopScan();
        scanForDongles();
    };
    pass(2s);
    EXPECT_GE(calls().reports, 15);
}

TEST_P(Radio, CanBeStoppedFromInsideAReport) {
    scanForDongles();
    calls().onReport = [this] { radio().stopScan(); };
    pass(2s);
    EXPECT_EQ(calls().reports, 1);
}

TEST_P(Radio, StoppingWithoutAScanIsHarmless) {
    radio().stopScan();
    scanForDongles();
    pass(1s);
    EXPECT_GE(calls().reports, 5);
}

TEST_P(Radio, CancelsATimerTogetherWithTheScan) {
    const auto timer = someTimer();
    scanFor(*timer);
    pass(1s);
    radio().stopScan({.cancelled = timer.get()});
    EXPECT_FALSE(timer->isValid());
    const int before = calls().reports;
    scanFor(*timer);
    pass(1s);
    EXPECT_EQ(calls().reports, before);
}

TEST_P(Radio, DropsTheStopThatACancelledTimerAsksFor) {
    const auto timer = someTimer();
    timer->invalidate();
    scanForDongles();
    pass(1s);
    radio().stopScan({.asker = timer.get()});
    const int before = calls().reports;
    pass(1s);
    EXPECT_GE(calls().reports, before + 5);
}

TEST_P(Radio, DoesWhatAValidTimerAsksFor) {
    const auto timer = someTimer();
    scanFor(*timer);
    pass(1s);
    EXPECT_GE(calls().reports, 5);
    radio().stopScan({.asker = timer.get()});
    const int before = calls().reports;
    pass(1s);
    EXPECT_EQ(calls().reports, before);
    EXPECT_TRUE(timer->isValid());
}

TEST_P(Radio, PutsWhatAReportsHandlerThrowsOnTheConsoleAndGoesOn) {
    scanForDongles();
    calls().onReport = [] { throw std::runtime_error("the application failed"); };
    pass(1s);
    EXPECT_GE(calls().reports, 5);
    const auto lines = bench_->console.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_NE(lines[0].find("the application failed"), std::string::npos);
}

TEST_P(Radio, SurvivesAHandlerThatThrowsNoException) {
    scanForDongles();
    calls().onReport = [] { throw 7; };
    pass(1s);
    EXPECT_GE(calls().reports, 5);
    EXPECT_FALSE(bench_->console.lines().empty());
}

TEST_P(Radio, TellsTheLossAndTheReturnOfItsAdapter) {
    scanForDongles();
    pass(19s);
    EXPECT_TRUE(calls().states.empty() || calls().states.back() == CBManagerStatePoweredOn);
    pass(2s);
    EXPECT_EQ(radio().state(), CBManagerStatePoweredOff);
    ASSERT_FALSE(calls().states.empty());
    EXPECT_EQ(calls().states.back(), CBManagerStatePoweredOff);
    pass(10s);
    EXPECT_EQ(radio().state(), CBManagerStatePoweredOn);
    EXPECT_EQ(calls().states.back(), CBManagerStatePoweredOn);
}

TEST_P(Radio, ReportsAgainAfterTheReturnOfItsAdapterWithoutBeingAsked) {
    scanForDongles();
    pass(31s);
    const int before = calls().reports;
    pass(2s);
    EXPECT_GE(calls().reports, before + 10);
}

INSTANTIATE_TEST_SUITE_P(EveryBackEnd, Radio,
                         testing::Values(BackEnd{"Virtual", virtualBench}, BackEnd{"Replay", replayBench},
                                         BackEnd{"Simulator", simulatorBench}, BackEnd{"Hci", hciBench},
                                         BackEnd{"HciBeside", hciBesideBench}, BackEnd{"Bluez", bluezBench},
                                         BackEnd{"BluezLate", lateBluezBench}),
                         [](const auto& backEnd) { return backEnd.param.name; });

}  // namespace
}  // namespace nearcast::contract
