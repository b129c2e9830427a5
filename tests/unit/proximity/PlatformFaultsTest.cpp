// SPDX-License-Identifier: Apache-2.0
#include "doubles/FaultyPlatform.h"
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using doubles::Fault;
using Call = doubles::FaultyPlatform::Call;

constexpr std::string_view dongle = doubles::ManagerBench::dongle;

/// A manager on a platform that fails on demand, beside a bench that only lends its platform and journal.
class PlatformFaults : public testing::Test {
protected:
    PlatformFaults() {
        manager_.init();
        manager_.setDelegate(bench_.listener());
        bench_.journal.clear();
    }
    ~PlatformFaults() override {
        for (int call = 0; call < static_cast<int>(Call::count); ++call) faulty_.failAt(static_cast<Call>(call), 0);
        manager_.stopScan();
    }
    PlatformFaults(const PlatformFaults&) = delete;
    PlatformFaults& operator=(const PlatformFaults&) = delete;

    /// Every lock can be taken, and what takes it works.
    void expectLocksFree() {
        EXPECT_NO_THROW(manager_.getRSSI(dongle));
        EXPECT_NO_THROW(manager_.getSettings());
        bench_.hear(dongle, 127);
        bench_.journal.clear();
        bench_.journal.watchLocks();
        EXPECT_NO_THROW(manager_.stopScan());
        EXPECT_EQ(bench_.journal.count("take _lockStartScanFlag"), 1U);
        EXPECT_EQ(bench_.journal.count("release _lockStartScanFlag"), 1U);
        NSLock::setObserver(nullptr);
    }
    std::size_t sweeps() { return bench_.journal.count("trace 2 eventRepeatTimer: "); }
    std::size_t restarts() { return bench_.journal.count("trace 2 restartScan:: <ptr>"); }

    doubles::ManagerBench bench_;
    doubles::FaultyPlatform faulty_{bench_.platform};
    Manager manager_{&bench_, faulty_};
};

TEST_F(PlatformFaults, EachCallOfAStartThatFailsPassesOnAndLeavesTheManagerIdleAndItsLockFree) {
    const std::pair<Call, int> faults[] = {{Call::state, 1}, {Call::makeTimer, 1}, {Call::fire, 1},
                                           {Call::stop, 1},  {Call::scan, 1},      {Call::makeTimer, 2}};
    for (const auto& [call, n] : faults) {
        faulty_.failAt(call, n);
        EXPECT_THROW(manager_.startScan(), Fault) << static_cast<int>(call) << ", " << n;
        EXPECT_TRUE(manager_.startScan()) << "not running, and the lock is free";
        expectLocksFree();
    }
}

TEST_F(PlatformFaults, AFaultInTheSleepForTheRadiosStatePassesOn) {
    bench_.radio().setState(0);
    faulty_.failAt(Call::sleep, 2);
    EXPECT_THROW(manager_.startScan(), Fault);
    EXPECT_EQ(bench_.platform.sleeps, 1);
    expectLocksFree();
}

TEST_F(PlatformFaults, AStartThatFailsAtTheFirstFiringLeavesItsRestartTimerBehind) {
    faulty_.failAt(Call::scan, 1);
    EXPECT_THROW(manager_.startScan(), Fault);
    bench_.journal.watchTraces();
    bench_.pass(120s);
    EXPECT_EQ(restarts(), 1U) << "what was stored stays";
    EXPECT_EQ(sweeps(), 0U) << "the sweep's timer was never made";
    EXPECT_TRUE(manager_.startScan()) << "the flag was never set";
}

TEST_F(PlatformFaults, AStopAfterAFailedStartEndsWhatItLeft) {
    faulty_.failAt(Call::makeTimer, 2);
    EXPECT_THROW(manager_.startScan(), Fault);
    EXPECT_TRUE(bench_.radio().scanning());
    manager_.stopScan();
    EXPECT_FALSE(bench_.radio().scanning());
    bench_.journal.clear();
    bench_.journal.watchTraces();
    bench_.pass(600s);
    EXPECT_EQ(bench_.journal.lines(), Lines{});
}

TEST_F(PlatformFaults, AFailedStartWritesNoExitRecord) {
    faulty_.failAt(Call::scan, 1);
    bench_.journal.watchTraces();
    EXPECT_THROW(manager_.startScan(), Fault);
    EXPECT_EQ(bench_.journal.lines("trace 1 "), Lines{});
    EXPECT_EQ(bench_.journal.lines("trace 3 restartScan"), Lines{});
}

TEST_F(PlatformFaults, ARestartThatFailsIsTakenToTheConsoleAndTheNextOneComes) {
    for (const Call call : {Call::stop, Call::scan}) {
        manager_.startScan();
        bench_.journal.clear();
        faulty_.failAt(call, 1);
        bench_.pass(120s);
        ASSERT_EQ(bench_.console().size(), 1U);
        EXPECT_NE(bench_.console()[0].find("the platform failed"), std::string::npos);
        bench_.journal.clear();
        bench_.pass(120s);
        EXPECT_EQ(bench_.journal.lines("central").size(), 2U);
        EXPECT_EQ(bench_.console(), Lines{});
        expectLocksFree();
    }
}

TEST_F(PlatformFaults, AStopThatFailsAtTheRadioLeavesTheScanRunningAsItWas) {
    manager_.startScan(1);
    faulty_.failAt(Call::stop, 1);
    EXPECT_THROW(manager_.stopScan(), Fault);
    EXPECT_FALSE(manager_.startScan()) << "it still runs, and the lock is free";
    bench_.hear(dongle, -60);
    bench_.hear(dongle, -60);
    EXPECT_EQ(bench_.reports().size(), 1U);
    expectLocksFree();
    EXPECT_TRUE(manager_.startScan());
}

TEST_F(PlatformFaults, AStopThatFailsAtEitherTimerCanBeAskedAgain) {
    for (const int n : {1, 2, 3}) {  // the radio cancels the first timer as well
        manager_.startScan();
        faulty_.failAt(Call::invalidate, n);
        EXPECT_THROW(manager_.stopScan(), Fault);
        EXPECT_FALSE(manager_.startScan()) << "the flag is cleared last";
        expectLocksFree();
        bench_.journal.clear();
        bench_.journal.watchTraces();
        bench_.pass(600s);
        EXPECT_EQ(bench_.journal.lines(), Lines{});
        LogWriter::sharedInstance().stop();
    }
}

TEST_F(PlatformFaults, AScanThatFailsAfterArmingLeavesTheCalibrationArmedUntilAStop) {
    faulty_.failAt(Call::scan, 1);
    bench_.journal.watchTraces();
    EXPECT_THROW(manager_.calibrateActionArea(dongle), Fault);
    EXPECT_EQ(bench_.journal.lines("trace 1 "), Lines{});
    EXPECT_TRUE(manager_.startScan(1)) << "no scan was noted";
    bench_.hear(dongle, -60);
    bench_.hear(dongle, -60);
    EXPECT_EQ(bench_.reports(), Lines{}) << "the calibration takes what is heard";
    EXPECT_EQ(manager_.getRSSI(dongle), 127);
    manager_.stopScan();
    manager_.startScan(1);
    bench_.hear(dongle, -60);
    bench_.hear(dongle, -60);
    EXPECT_EQ(bench_.reports().size(), 1U);
}

TEST_F(PlatformFaults, ACalibrationAfterAFailedOneHasSamplesOfItsOwn) {
    faulty_.failAt(Call::scan, 1);
    EXPECT_THROW(manager_.calibrateActionArea(dongle), Fault);
    manager_.startScan();
    for (int times = 0; times < 20; ++times) bench_.hear(dongle, -40);
    manager_.stopScan();
    bench_.platform.onSleep = [&] { bench_.hearTimes(15, dongle, -60); };
    EXPECT_EQ(manager_.calibrateActionArea(dongle), -60);
}

TEST_F(PlatformFaults, AFaultInACalibrationsSleepPassesOnAndLeavesItRunningUntilAStop) {
    faulty_.failAt(Call::sleep, 3);
    EXPECT_THROW(manager_.calibrateActionArea(dongle), Fault);
    EXPECT_FALSE(manager_.startScan());
    EXPECT_TRUE(bench_.radio().scanning());
    expectLocksFree();
    EXPECT_TRUE(manager_.startScan());
}

TEST_F(PlatformFaults, AFaultInTheStopThatEndsACalibrationPassesOn) {
    bench_.platform.onSleep = [&] { bench_.hearTimes(15, dongle, -60); };
    faulty_.failAt(Call::stop, 1);
    EXPECT_THROW(manager_.calibrateActionArea(dongle), Fault);
    EXPECT_FALSE(manager_.startScan());
    expectLocksFree();
    EXPECT_EQ(manager_.calibrateActionArea(dongle), -60);
}

TEST_F(PlatformFaults, AClockThatFailsInTheHandlerLosesThatAdvertisementAlone) {
    manager_.startScan(1);
    faulty_.failAt(Call::date, 1);
    bench_.hear(dongle, -60);
    ASSERT_EQ(bench_.console().size(), 1U);
    EXPECT_NE(bench_.console()[0].find("the platform failed"), std::string::npos);
    bench_.hear(dongle, -61);
    bench_.hear(dongle, -62);
    EXPECT_EQ(bench_.reports(), Lines{"discover  0 00:11:22:AA:BB:CC -62"});
    expectLocksFree();
}

TEST_F(PlatformFaults, AClockThatFailsInTheSweepLeavesTheTableWholeForTheNextOne) {
    manager_.startScan(1);
    bench_.hear(dongle, -60);
    faulty_.failAt(Call::date, 1);
    bench_.pass(5s);
    EXPECT_EQ(bench_.console().size(), 1U);
    EXPECT_EQ(manager_.getRSSI(dongle), 0);
    bench_.pass(5s);
    EXPECT_EQ(bench_.reports(), Lines{"silent  00:11:22:AA:BB:CC"});
    expectLocksFree();
}

}  // namespace
}  // namespace nearcast
