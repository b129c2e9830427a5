// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

const Lines restart{"central stop", "central scan 4F37D906-3F43-440C-98E0-9E709971CADF"};
const std::string duplicate =
    "console A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.";

class ScanControl : public testing::Test, protected doubles::ManagerBench {
protected:
    ~ScanControl() override { manager.stopScan(); }
    /// How often the sweep has run, by its entry records; traces are watched.
    std::size_t sweeps() { return journal.count("trace 2 eventRepeatTimer: "); }
};

TEST_F(ScanControl, AStartStopsAndStartsTheRadioOnceAtOnce) {
    EXPECT_TRUE(manager.startScan());
    EXPECT_EQ(journal.lines(), restart);
}

TEST_F(ScanControl, AnEmptyRegistryIsNoReasonToRefuse) { EXPECT_TRUE(manager.startScan()); }

TEST_F(ScanControl, TheRadioIsRestartedEvery120Seconds) {
    manager.startScan();
    journal.clear();
    pass(119'999'999us);
    EXPECT_EQ(journal.lines(), Lines{});
    pass(1us);
    EXPECT_EQ(journal.lines(), restart);
    pass(120s);
    EXPECT_EQ(journal.lines().size(), 4U);
}

TEST_F(ScanControl, TheFirstSweepComesFiveSecondsAfterTheStartAndThenEveryFive) {
    manager.startScan();
    journal.watchTraces();
    pass(4'999'999us);
    EXPECT_EQ(sweeps(), 0U);
    pass(1us);
    EXPECT_EQ(sweeps(), 1U);
    pass(25s);
    EXPECT_EQ(sweeps(), 6U);
}

TEST_F(ScanControl, WhereBothAreDueTheRestartComesFirst) {
    manager.startScan();
    pass(119s);
    journal.clear();
    journal.watchTraces();
    pass(1s);
    const auto lines = journal.lines("trace 2 ");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "trace 2 restartScan:: <ptr>");
    EXPECT_EQ(lines[1], "trace 2 eventRepeatTimer: ");
}

TEST_F(ScanControl, ASecondStartIsRefusedAndLeavesTimersAndRadioAlone) {
    manager.startScan();
    pass(60s);
    journal.clear();
    EXPECT_FALSE(manager.startScan());
    EXPECT_EQ(journal.lines(), Lines{duplicate});
    pass(60s);
    EXPECT_EQ(journal.lines(), (Lines{duplicate, restart[0], restart[1]})) << "the schedule is the first start's";
}

TEST_F(ScanControl, AStartDuringACalibrationIsRefused) {
    bool started = true;
    platform.onSleep = [&] {
        if (platform.sleeps == 1) started = manager.startScan();
    };
    manager.calibrateActionArea(dongle);
    EXPECT_FALSE(started);
    EXPECT_EQ(console(), Lines{duplicate});
}

TEST_F(ScanControl, ARadioThatCannotBeUsedIsRefusedWithoutTakingTheLock) {
    radio().setState(4);
    journal.watchLocks();
    EXPECT_FALSE(manager.startScan());
    EXPECT_EQ(journal.lines(), Lines{"console Bluetooth Low Energy is not supported."});
}

TEST_F(ScanControl, AMissingRegistryIsRefused) {
    manager.hasSettings = false;
    journal.watchTraces();
    EXPECT_FALSE(manager.startScan());
    EXPECT_EQ(console(), Lines{"console settings is nil"});
    EXPECT_EQ(journal.lines("trace 7 "), Lines{"trace 7 startScan: self.settings == nil, <ptr>"});
    EXPECT_EQ(journal.lines("trace 1 "), Lines{"trace 1 startScan: -> 0"});
    EXPECT_EQ(journal.lines("central"), Lines{});
}

TEST_F(ScanControl, ReadinessComesBeforeTheRegistryAndTheRegistryBeforeTheRunningScan) {
    manager.startScan();
    manager.hasSettings = false;
    radio().setState(4);
    manager.startScan();
    radio().setState(5);
    manager.startScan();
    EXPECT_EQ(console(), (Lines{"console Bluetooth Low Energy is not supported.", "console settings is nil"}));
}

TEST_F(ScanControl, ASamplingNumberOfZeroIsRefusedAndChangesNothing) {
    journal.watchTraces();
    EXPECT_FALSE(manager.startScan(0));
    EXPECT_EQ(manager.samplingNumber(), 7U);
    EXPECT_EQ(journal.lines(), (Lines{"trace 0 startScan:: 0", "trace 7 startScan:: samplingNumber == 0, 0",
                                      "trace 1 startScan:: 0, -> 0"}));
    EXPECT_TRUE(manager.startScan(1));
}

TEST_F(ScanControl, TheSamplingNumberStaysEvenWhenTheStartIsRefused) {
    listen();
    manager.startScan(7);
    hear(dongle, -60);
    EXPECT_FALSE(manager.startScan(3));
    EXPECT_EQ(manager.samplingNumber(), 3U);
    hearTimes(2, dongle, -60);
    EXPECT_EQ(reports(), Lines{"discover  0 00:11:22:AA:BB:CC -60"}) << "it counts from the next advertisement on";
}

TEST_F(ScanControl, AStartWithANumberTracesBothOperations) {
    journal.watchTraces();
    manager.startScan(18446744073709551615U);
    EXPECT_EQ(journal.lines("trace 0 "), (Lines{"trace 0 startScan:: 18446744073709551615", "trace 0 startScan: "}));
    EXPECT_EQ(journal.lines("trace 1 "),
              (Lines{"trace 1 startScan: -> 1", "trace 1 startScan:: 18446744073709551615, -> 1"}));
}

TEST_F(ScanControl, AStopWhereNothingRunsStillStopsTheRadio) {
    journal.watchTraces();
    manager.stopScan();
    EXPECT_EQ(journal.lines(), (Lines{"trace 0 stopScan: ", "trace 6 stopScan: manager != nil, <ptr>", "central stop",
                                      "trace 1 stopScan: "}));
}

TEST_F(ScanControl, AStopEndsBothTimersAndTheScan) {
    listen();
    manager.startScan(1);
    manager.stopScan();
    journal.clear();
    journal.watchTraces();
    hearTimes(2, dongle, -60);
    pass(600s);
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST_F(ScanControl, AStopLeavesWhatWasHeardKnown) {
    listen();
    manager.startScan(1);
    hearTimes(2, dongle, -60);
    manager.stopScan();
    pass(60s);
    EXPECT_EQ(manager.getRSSI(dongle), -60);
}

TEST_F(ScanControl, AStopDuringACalibrationEndsItsSampling) {
    listen();
    platform.onSleep = [&] {
        hearTimes(10, dongle, -60);
        if (platform.sleeps == 1) manager.stopScan();
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(platform.sleeps, 14);
}

TEST_F(ScanControl, AStartAfterAStopSucceedsWithTimersOfItsOwn) {
    manager.startScan();
    pass(3s);
    manager.stopScan();
    EXPECT_TRUE(manager.startScan());
    journal.watchTraces();
    pass(4'999'999us);
    EXPECT_EQ(sweeps(), 0U);
    pass(1us);
    EXPECT_EQ(sweeps(), 1U);
}

TEST_F(ScanControl, TheLockSpansTheRadioAndBothTimersAndNoMore) {
    journal.watchLocks();
    manager.startScan();
    const Lines start{"take _lockMutableSettingsFlag",
                      "release _lockMutableSettingsFlag",
                      "take _lockStartScanFlag",
                      restart[0],
                      restart[1],
                      "release _lockStartScanFlag"};
    EXPECT_EQ(journal.lines(), start);
    journal.clear();
    manager.stopScan();
    EXPECT_EQ(journal.lines(), (Lines{"take _lockStartScanFlag", "central stop", "release _lockStartScanFlag"}));
    journal.clear();
}

TEST_F(ScanControl, ARestartTakesNoLock) {
    manager.startScan();
    pass(119s);
    journal.clear();
    journal.watchLocks();
    pass(500ms);
    EXPECT_EQ(journal.lines(), Lines{});
    pass(500ms);
    EXPECT_EQ(journal.lines("central"), restart);
    EXPECT_EQ(journal.lines("take"), Lines{"take _lockRssiDataFlag"}) << "that is the sweep's";
}

TEST_F(ScanControl, EachRefusalOfAStartIsTracedBeforeTheConsoleHearsOfIt) {
    radio().setState(4);
    journal.watchTraces();
    manager.startScan();
    EXPECT_EQ(journal.lines("trace 7 "), Lines{"trace 7 startScan: [self isLECapableHardware] == NO, <ptr>"});
    radio().setState(5);
    manager.startScan();
    journal.clear();
    manager.startScan();
    const auto lines = journal.lines();
    ASSERT_GE(lines.size(), 3U);
    const Lines end(lines.end() - 3, lines.end());
    EXPECT_EQ(end, (Lines{"trace 7 startScan: scanStart == YES, 1", duplicate, "trace 1 startScan: -> 0"}));
}

TEST_F(ScanControl, AStartIsTracedStepByStep) {
    journal.watchTraces();
    manager.startScan();
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 0 startScan: ", "trace 2 isLECapableHardware: ",
                     "trace 6 isLECapableHardware: manager.state: 5", "trace 3 isLECapableHardware: -> 1",
                     "trace 2 getSettings: ", "trace 3 getSettings: <ptr>", "trace 2 restartScan:: <ptr>", restart[0],
                     restart[1], "trace 3 restartScan:: <ptr>", "trace 1 startScan: -> 1"}));
}

TEST_F(ScanControl, ARefusedStartLeavesTheNumberItCameWithAndZeroLeavesTheOneBefore) {
    radio().setState(4);
    EXPECT_FALSE(manager.startScan(3));
    EXPECT_EQ(manager.samplingNumber(), 3U);
    EXPECT_FALSE(manager.startScan(0));
    EXPECT_EQ(manager.samplingNumber(), 3U);
}

TEST_F(ScanControl, AStartAfterAStopRestartsTheRadioOnItsOwnSchedule) {
    manager.startScan();
    pass(100s);
    manager.stopScan();
    manager.startScan();
    journal.clear();
    pass(119'999'999us);
    EXPECT_EQ(journal.lines(), Lines{});
    pass(1us);
    EXPECT_EQ(journal.lines(), restart);
}

TEST_F(ScanControl, AChangeOfTheRadiosStateStartsAndStopsNothing) {
    listen();
    manager.startScan(1);
    journal.clear();
    radio().setState(4);
    hearTimes(2, dongle, -60);
    EXPECT_EQ(journal.lines(), Lines{"discover  0 00:11:22:AA:BB:CC -60"});
    EXPECT_FALSE(manager.startScan());
    radio().setState(5);
    EXPECT_FALSE(manager.startScan()) << "the scan still runs";
}

}  // namespace
}  // namespace nearcast
