// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/RadioMonitor.h"

#include "doubles/KeptLines.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

class RadioMonitorTest : public testing::Test {
protected:
    void pass(NSDate::Duration duration) { now += duration; }
    void hear(int reports) {
        for (int i = 0; i < reports; ++i) monitor.heard(AdvertisingReport(), true);
    }
    /// So many reports in each of so many seconds.
    void hearFor(int seconds, int reports) {
        for (int i = 0; i < seconds; ++i) {
            hear(reports);
            pass(1s);
        }
    }

    NSDate::Duration now = 100s;
    KeptLines console;
    RadioMonitor monitor{console, [this] { return NSDate(now); }};
};

TEST_F(RadioMonitorTest, SaysBeforeAnyRadioThatThereIsNone) {
    EXPECT_EQ(monitor.health().state, CBManagerStateUnknown);
    EXPECT_EQ(monitor.health().why, "no radio has been opened");
}

TEST_F(RadioMonitorTest, TellsTheStateItsBeginAndItsReason) {
    monitor.open(CBManagerStatePoweredOn, "");
    pass(5s);
    monitor.noteState(CBManagerStatePoweredOff, "switched off");
    pass(5s);
    EXPECT_EQ(monitor.health().state, CBManagerStatePoweredOff);
    EXPECT_EQ(monitor.health().why, "switched off");
    EXPECT_EQ(monitor.health().since, 105);
}

TEST_F(RadioMonitorTest, KeepsTheBeginOfAStateWhoseReasonChanges) {
    monitor.open(CBManagerStatePoweredOff, "switched off");
    pass(5s);
    monitor.noteState(CBManagerStatePoweredOff, "blocked");
    EXPECT_EQ(monitor.health().since, 100);
    EXPECT_EQ(monitor.health().why, "blocked");
}

TEST_F(RadioMonitorTest, CountsForgeriesAndTellsTheFirst) {
    std::vector<std::uint64_t> told;
    monitor.open(CBManagerStatePoweredOn, "");
    monitor.setHealthChanged([&](const RadioHealth& health) { told.push_back(health.forged); });
    for (int i = 0; i < 3; ++i) monitor.noteForgery();
    EXPECT_EQ(monitor.health().forged, 3U);
    EXPECT_EQ(told, std::vector<std::uint64_t>{1});
    monitor.open(CBManagerStatePoweredOn, "");
    EXPECT_EQ(monitor.health().forged, 0U);
    monitor.noteForgery();
    EXPECT_EQ(told, (std::vector<std::uint64_t>{1, 1})) << "another radio";
}

TEST_F(RadioMonitorTest, HasNoAgeBeforeTheFirstReport) {
    monitor.open(CBManagerStatePoweredOn, "");
    EXPECT_FALSE(monitor.health().lastReportAge);
}

TEST_F(RadioMonitorTest, TellsTheAgeOfTheLastReport) {
    hear(1);
    pass(1500ms);
    EXPECT_EQ(monitor.health().lastReportAge, 1.5);
}

TEST_F(RadioMonitorTest, TakesTheRateOverTenSeconds) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(20, 30);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 30);
}

TEST_F(RadioMonitorTest, LeavesTheRunningSecondOutOfTheRate) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(20, 30);
    hear(500);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 30);
}

TEST_F(RadioMonitorTest, TakesTheRateOfAYoungRadioOverItsLife) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(4, 30);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 30);
}

TEST_F(RadioMonitorTest, TakesTheFirstSecondAsAWholeOne) {
    monitor.open(CBManagerStatePoweredOn, "");
    hear(7);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 7);
}

TEST_F(RadioMonitorTest, LetsTheRateFallWhileNothingIsHeard) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(20, 30);
    pass(5s);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 15);
}

TEST_F(RadioMonitorTest, RemembersNothingAfterTenQuietSeconds) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(20, 30);
    pass(9s);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 3);
    pass(1s);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 0);
}

TEST_F(RadioMonitorTest, SurvivesALongSleep) {
    monitor.open(CBManagerStatePoweredOn, "");
    hearFor(20, 30);
    pass(10000h);
    hear(1);
    EXPECT_DOUBLE_EQ(monitor.health().reportsPerSecond, 0);
    EXPECT_EQ(monitor.health().lastReportAge, 0);
}

TEST_F(RadioMonitorTest, StartsAnewWithANewRadio) {
    hearFor(20, 30);
    monitor.noteRestart();
    monitor.open(CBManagerStatePoweredOn, "");
    EXPECT_EQ(monitor.health().reportsPerSecond, 0);
    EXPECT_FALSE(monitor.health().lastReportAge);
    EXPECT_EQ(monitor.health().restarts, 0U);
}

TEST_F(RadioMonitorTest, CallsTheListenerForEachChange) {
    std::vector<RadioHealth> heard;
    monitor.setHealthChanged([&](const RadioHealth& health) { heard.push_back(health); });
    monitor.noteState(CBManagerStatePoweredOff, "switched off");
    monitor.noteRestart();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].why, "switched off");
    EXPECT_EQ(heard[0].restarts, 0U);
    EXPECT_EQ(heard[1].restarts, 1U);
}

TEST_F(RadioMonitorTest, DoesNotCallTheListenerWhereNothingChanged) {
    monitor.noteState(CBManagerStatePoweredOff, "switched off");
    int calls = 0;
    monitor.setHealthChanged([&](const RadioHealth&) { ++calls; });
    monitor.noteState(CBManagerStatePoweredOff, "switched off");
    hear(5);
    EXPECT_EQ(calls, 0);
}

TEST_F(RadioMonitorTest, MayBeAskedFromInsideTheListener) {
    double since = 0;
    monitor.setHealthChanged([&](const RadioHealth&) { since = monitor.health().since; });
    monitor.noteState(CBManagerStatePoweredOn, "");
    pass(1s);
    monitor.noteState(CBManagerStatePoweredOff, "");
    EXPECT_EQ(since, 101);
}

TEST_F(RadioMonitorTest, PutsWhatAListenerThrowsOnTheConsole) {
    monitor.setHealthChanged([](const RadioHealth&) { throw std::runtime_error("the screen is gone"); });
    monitor.noteState(CBManagerStatePoweredOn, "");
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_NE(console.lines()[0].find("the screen is gone"), std::string::npos);
}

TEST_F(RadioMonitorTest, GivesEachReportToTheTapWithItsTime) {
    std::vector<std::pair<std::int32_t, NSDate::Duration>> tapped;
    monitor.setTap(
        [&](const AdvertisingReport& report, NSDate at, bool) { tapped.emplace_back(report.RSSI, at.sinceStart()); });
    AdvertisingReport report;
    report.RSSI = -50;
    monitor.heard(report, true);
    monitor.setTap(nullptr);
    monitor.heard(report, true);
    EXPECT_EQ(tapped, (std::vector<std::pair<std::int32_t, NSDate::Duration>>{{-50, 100s}}));
}

TEST_F(RadioMonitorTest, TellsTheTapWhatTheScanWants) {
    std::vector<bool> tapped;
    monitor.setTap([&](const AdvertisingReport&, NSDate, bool wanted) { tapped.push_back(wanted); });
    monitor.heard(AdvertisingReport(), true);
    monitor.heard(AdvertisingReport(), false);
    EXPECT_EQ(tapped, (std::vector<bool>{true, false}));
}

TEST_F(RadioMonitorTest, PutsWhatTheTapThrowsOnTheConsole) {
    monitor.setTap([](const AdvertisingReport&, NSDate, bool) { throw std::runtime_error("the disk is full"); });
    hear(1);
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_NE(console.lines()[0].find("the disk is full"), std::string::npos);
}

}  // namespace

}  // namespace nearcast
