// SPDX-License-Identifier: Apache-2.0
#include "report/ReportData.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

using Kind = lab::PlaybackEvent::Kind;

constexpr const char* barAddress = "02:4E:43:00:00:01";
constexpr const char* kitchenAddress = "02:4E:43:00:00:02";
constexpr std::uint32_t bar = 0;
constexpr std::uint32_t kitchen = 1;

SettingRecordPointer recordOf(const char* MACAddr) {
    return std::make_shared<const SettingRecord>(SettingRecord{{std::string(kQXDongleMACAddr), MACAddr}});
}

struct ReportDataTest : testing::Test {
    lab::Playback playback;
    NearestSettings settings;

    ReportDataTest() {
        playback.name = "shop.jsonl";
        playback.end = 10;
        playback.dongles = {{barAddress, "BT:Bar", "Bar", -65}, {kitchenAddress, "BT:Kitchen", ""}};
        auto bars = *recordOf(barAddress);
        bars.emplace(kQXThreshouldRSSI, -65);
        playback.registry = std::make_shared<const Settings>(Settings{
            {"BT:Bar", std::make_shared<const SettingRecord>(bars)}, {"BT:Kitchen", recordOf(kitchenAddress)}});
    }

    void hear(std::uint32_t dongle, double from, double to, std::int32_t RSSI) {
        for (double at = from; at < to; at += 0.1) playback.events.push_back({at, Kind::heard, dongle, RSSI});
    }
    ReportData report(const lines::Truth* truth = nullptr) { return reportOf(playback, settings, truth); }
};

TEST_F(ReportDataTest, ReadingsAndReportsAreCurvesOfTheirDongle) {
    playback.events = {
        {1, Kind::heard, kitchen, -70}, {1.0004, Kind::reported, kitchen, -69}, {2, Kind::heard, bar, -50}};
    const ReportData data = report();
    EXPECT_EQ(data.dongles[1].raw.at, std::vector<std::int64_t>{1000});
    EXPECT_EQ(data.dongles[1].raw.value, std::vector<std::int64_t>{-70});
    EXPECT_EQ(data.dongles[1].smoothed.at, std::vector<std::int64_t>{1000});
    EXPECT_EQ(data.dongles[1].smoothed.value, std::vector<std::int64_t>{-69});
    EXPECT_EQ(data.dongles[0].raw.value, std::vector<std::int64_t>{-50});
    EXPECT_EQ(data.end, 10000);
}

TEST_F(ReportDataTest, AThresholdIsTheDonglesOwnOrTheDefault) {
    settings.defaultThreshold = -90;
    const ReportData data = report();
    EXPECT_TRUE(data.dongles[0].ownThreshold);
    EXPECT_EQ(data.dongles[0].threshold, -65);
    EXPECT_FALSE(data.dongles[1].ownThreshold);
    EXPECT_EQ(data.dongles[1].threshold, -90);
}

TEST_F(ReportDataTest, DecisionsHaveTheirReasons) {
    hear(bar, 0, 10, -55);
    hear(kitchen, 0, 10, -70);
    std::sort(playback.events.begin(), playback.events.end(), [](auto& a, auto& b) { return a.at < b.at; });
    const ReportData data = report();
    ASSERT_EQ(data.decisions.size(), 2U);
    EXPECT_EQ(data.decisions[0].at, 0);
    EXPECT_EQ(data.decisions[0].dongle, noReportDongle);
    const ReportDecision& entered = data.decisions[1];
    EXPECT_EQ(entered.dongle, 0);
    EXPECT_EQ(entered.rule, NearestRule::entered);
    EXPECT_NEAR(entered.signal, -55, 0.5);
    EXPECT_EQ(entered.threshold, -65);
    EXPECT_EQ(entered.runnerUp, 1);
    EXPECT_NEAR(entered.distance.value_or(0), 15, 1);
}

TEST_F(ReportDataTest, ADongleThatFallsSilentLeaves) {
    hear(bar, 0, 2, -55);
    playback.events.push_back({7.5, Kind::silent, bar});
    const ReportData data = report();
    EXPECT_EQ(data.dongles[0].silent, std::vector<std::int64_t>{7500});
    ASSERT_EQ(data.decisions.size(), 3U);
    EXPECT_EQ(data.decisions[2].dongle, noReportDongle);
    EXPECT_EQ(data.decisions[2].rule, NearestRule::silent);
}

TEST_F(ReportDataTest, LevelsAreInTenthsAndEndWithTheDongle) {
    hear(bar, 0, 2, -55);
    const ReportData data = report();
    ASSERT_FALSE(data.dongles[0].level.at.empty());
    EXPECT_EQ(data.dongles[0].level.value.front(), -550);
    EXPECT_LT(data.dongles[0].level.at.back(), 7000);
    EXPECT_GE(data.dongles[0].level.at.back(), 6500);
}

TEST_F(ReportDataTest, TheRadioAndItsScansAreMarks) {
    playback.events = {{0, Kind::scanStarted},
                       {1, Kind::radio, lab::PlaybackEvent::noDongle, 4},
                       {2, Kind::radio, lab::PlaybackEvent::noDongle, 5},
                       {3, Kind::scanRestarted},
                       {4, Kind::scanStopped}};
    const ReportData data = report();
    ASSERT_EQ(data.radio.size(), 2U);
    EXPECT_FALSE(data.radio[0].hears);
    EXPECT_EQ(data.radio[0].state, "powered off");
    EXPECT_TRUE(data.radio[1].hears);
    ASSERT_EQ(data.scans.size(), 3U);
    EXPECT_EQ(data.scans[0].what + data.scans[1].what + data.scans[2].what, "startedrestartedstopped");
}

TEST_F(ReportDataTest, WhatFollowsFromTheRecordingsEndIsLeftOut) {
    playback.events = {{10, Kind::heard, bar, -50}, {10.001, Kind::silent, bar}};
    const ReportData data = report();
    EXPECT_EQ(data.dongles[0].raw.at.size(), 1U);
    EXPECT_TRUE(data.dongles[0].silent.empty());
}

TEST_F(ReportDataTest, ALeapIsDecidedInItsFirstHoursAndAtItsEnd) {
    hear(bar, 0, 10, -50);
    playback.events.push_back({10, Kind::radio, lab::PlaybackEvent::noDongle, 4});
    settings.staleFor = 3600;
    playback.end = 1e9;
    const ReportData data = report();
    ASSERT_FALSE(data.decisions.empty());
    EXPECT_EQ(data.decisions.back().rule, NearestRule::blind);
    EXPECT_EQ(data.decisions.back().at, 3610 * 1000);
    const ReportCurve& level = data.dongles[0].level;
    EXPECT_LT(level.at.size(), 20'000U);
    EXPECT_EQ(level.at.back(), 1'000'000'000'000);
}

TEST_F(ReportDataTest, WithoutATruthThereIsNone) { EXPECT_FALSE(report().truth); }

TEST_F(ReportDataTest, TheTruthNamesDonglesByTheirPlaces) {
    const lines::Truth truth = {{0, kitchenAddress}, {2, kitchenAddress}, {4, ""}, {6, barAddress}};
    const auto marks = report(&truth).truth.value();
    ASSERT_EQ(marks.size(), 3U);
    EXPECT_EQ(marks[0].dongle, 1);
    EXPECT_EQ(marks[1].dongle, noReportDongle);
    EXPECT_EQ(marks[1].at, 4000);
    EXPECT_EQ(marks[2].dongle, 0);
}

TEST_F(ReportDataTest, ATruthThatNobodyHeardGetsAPlaceToo) {
    const lines::Truth truth = {{0, "AA:BB:CC:DD:EE:FF"}};
    const ReportData data = report(&truth);
    ASSERT_EQ(data.dongles.size(), 3U);
    EXPECT_EQ(data.truth->at(0).dongle, 2);
    EXPECT_EQ(data.dongles[2].MACAddr, "AA:BB:CC:DD:EE:FF");
}

TEST_F(ReportDataTest, DonglesThatAreNotRegisteredAreShownAndNeverChosen) {
    playback.dongles.push_back({"02:4E:43:00:00:03", "", ""});
    hear(2, 0, 10, -30);
    const ReportData data = report();
    EXPECT_FALSE(data.dongles[2].raw.at.empty());
    ASSERT_EQ(data.decisions.size(), 1U);
    EXPECT_EQ(data.decisions[0].dongle, noReportDongle);
}

TEST_F(ReportDataTest, SettingsThatCannotBeAreRefused) {
    settings.attack = 0;
    EXPECT_THROW(report(), std::invalid_argument);
}

}  // namespace
}  // namespace nearcast::cli
