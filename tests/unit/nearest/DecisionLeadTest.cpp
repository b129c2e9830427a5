// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::nearest {

namespace {

/// The bar's device is chosen at 1 s. Neither has a threshold: both are inside wherever they are heard.
DecisionBench atTheBar(const NearestSettings& settings = plainSettings(), std::optional<std::int32_t> threshold = {}) {
    DecisionBench bench(settings, threshold);
    bench.both(0, 0.75, -60, -61);
    bench.both(1, 1, -60, -60);
    return bench;
}

TEST(DecisionLeadTest, KeepsTheChosenOneOnATie) {
    DecisionBench bench = atTheBar();
    bench.both(1.25, 20, -60, -60);
    EXPECT_EQ(bench.at(20), "Bar");
}

TEST(DecisionLeadTest, DoesNotCountALeadAsLargeAsTheMargin) {
    DecisionBench bench = atTheBar();
    bench.both(1.25, 30, -62, -60);
    EXPECT_EQ(bench.at(30), "Bar");
}

TEST(DecisionLeadTest, CountsWhatALeadIsLargerThanTheMargin) {
    DecisionBench bench = atTheBar();
    bench.both(1.25, 7, -63, -60);  // 1 dB above the margin, from 1.25 s on
    EXPECT_EQ(bench.at(7.24), "Bar");
    EXPECT_EQ(bench.at(7.25), "Till");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::led);
}

TEST(DecisionLeadTest, MovesSoonerForALargerLead) {
    DecisionBench bench = atTheBar();
    bench.both(2, 3, -66, -60);  // 4 dB above the margin: 6 dB s after 1.5 s
    EXPECT_EQ(bench.at(3.49), "Bar");
    EXPECT_EQ(bench.at(3.5), "Till");
}

/// When the till is chosen, in seconds after it took the lead by 5 dB at a signal of -75 dBm.
double patienceFarAway(double quietSeconds) {
    NearestSettings settings = plainSettings();
    settings.closeTime = 10;
    DecisionBench bench(settings, std::nullopt);
    bench.both(0, quietSeconds, -75, -76);
    double at = quietSeconds;
    while (at < quietSeconds + 100 && bench.at(at) == "Bar") {
        at += 0.25;
        bench.both(at, at, -80, -75);
    }
    return at - quietSeconds;
}

TEST(DecisionLeadTest, LearnsWhatIsCloseFromTheStrongestSignal) {
    EXPECT_GT(patienceFarAway(1), 4);
    EXPECT_LE(patienceFarAway(100), 2.5);
}

/// How long it takes to follow a lead of 6 dB s, 1 dB above the margin, where the strongest device was 20 dB above the
/// other one for ten minutes.
double secondsWhereItStandsOut(double contrast) {
    NearestSettings settings = plainSettings();
    settings.contrast = contrast;
    settings.closeTime = 3600;
    DecisionBench bench(settings, std::nullopt);
    bench.both(0, 600, -60, -80);
    double at = 600.25;
    bench.both(at, at, -63, -60);
    while (at < 620 && bench.at(at) == "Bar") {
        at += DecisionBench::quarter;
        bench.both(at, at, -63, -60);
    }
    return at - 600.25;
}

TEST(DecisionLeadTest, CountsLeadsAsTheyAreUntilTheStrongestDeviceStandsOut) {
    EXPECT_EQ(secondsWhereItStandsOut(100), 6);
    EXPECT_EQ(secondsWhereItStandsOut(20), 6);
}

TEST(DecisionLeadTest, CountsLeadsBySquareWhereTheStrongestDeviceStandsOut) {
    EXPECT_LE(secondsWhereItStandsOut(14), 3.25);
    EXPECT_GE(secondsWhereItStandsOut(14), 2.75);
}

TEST(DecisionLeadTest, CountsLeadsFourTimesAtMostWhereTheStrongestDeviceStandsOut) {
    EXPECT_EQ(secondsWhereItStandsOut(9), 1.5);
    EXPECT_EQ(secondsWhereItStandsOut(1), 1.5);
}

/// How long it takes to follow the same lead where the bar's device was at -60 dBm for ten minutes, the till's at -70,
/// and others are at what is given.
double secondsBeside(const std::vector<std::int32_t>& others) {
    NearestSettings settings = plainSettings();
    settings.contrast = 10;
    settings.closeTime = 3600;
    DecisionBench bench(settings, std::nullopt);
    Settings registry = {{"Bar", recordOf(barMAC)}, {"Till", recordOf(tillMAC)}};
    const auto addressOf = [](std::size_t other) { return "02:00:00:00:01:0" + std::to_string(other); };
    for (std::size_t i = 0; i < others.size(); ++i) registry.emplace("Other " + addressOf(i), recordOf(addressOf(i)));
    bench.decision.setRegistry(0, registry);
    double at = 0;
    for (; at <= 600 || (at < 620 && bench.at(at) == "Bar"); at += DecisionBench::quarter) {
        for (std::size_t i = 0; i < others.size(); ++i) bench.decision.reported(at, addressOf(i), others[i]);
        at <= 600 ? bench.both(at, at, -60, -70) : bench.both(at, at, -63, -60);
    }
    return at - 600;
}

TEST(DecisionLeadTest, LooksAtTheThreeNextDevicesToSeeWhetherTheStrongestStandsOut) {
    EXPECT_LT(secondsBeside({-70, -90}), secondsBeside({-70, -70}));
}

TEST(DecisionLeadTest, LooksAtNoMoreThanThreeToSeeWhetherTheStrongestStandsOut) {
    EXPECT_EQ(secondsBeside({-90, -70, -90, -70}), secondsBeside({-70, -70}));
}

TEST(DecisionLeadTest, LooksAheadAtALevelThatRises) {
    const auto seconds = [](double anticipation) {
        NearestSettings settings = plainSettings();
        settings.anticipation = anticipation;
        DecisionBench bench(settings, std::nullopt);
        bench.both(0, 4, -60, -64);
        double at = 4;
        for (; bench.at(at) == "Bar"; at += 0.25) bench.both(at, at, -63, -60);
        return at - 4;
    };
    EXPECT_LT(seconds(0.5), seconds(0));
}

TEST(DecisionLeadTest, CountsALeadOfTwelveDecibelsAtMost) {
    NearestSettings settings = plainSettings();
    settings.patience = 24;
    DecisionBench bench = atTheBar(settings);
    bench.both(2, 3.75, -90, -60);  // were it 28 dB: over before 3 s
    EXPECT_EQ(bench.at(3), "Bar");
}

TEST(DecisionLeadTest, TakesBackWhatAddedUpWhileTheOtherIsBehind) {
    DecisionBench bench = atTheBar();
    bench.both(2, 3, -64, -60);     // 2 dB above the margin for 1.25 s
    bench.both(3.25, 5, -60, -66);  // 8 dB below it
    bench.both(5.25, 7.75, -64, -60);
    EXPECT_EQ(bench.at(8), "Bar");
    EXPECT_EQ(bench.at(8.25), "Till");
}

TEST(DecisionLeadTest, LeavesAsideALeaderThatIsNotInsideItsArea) {
    DecisionBench bench = atTheBar(plainSettings(), -60);
    bench.both(1.25, 20, -64, -61);
    EXPECT_EQ(bench.at(20), "Bar");
}

TEST(DecisionLeadTest, StaysForTheDwellTimeThoughALeadHasAddedUp) {
    NearestSettings settings = plainSettings();
    settings.dwell = 4;
    settings.patience = 0;
    DecisionBench bench(settings);
    bench.both(0, 4, -58, -60);
    ASSERT_EQ(bench.at(4), "Bar");
    bench.both(4.25, 7.75, -60, -50);
    EXPECT_EQ(bench.at(7.999), "Bar");
    EXPECT_EQ(bench.at(8), "Till");
}

TEST(DecisionLeadTest, CountsALeadOnlyAfterTheLastChange) {
    DecisionBench bench = atTheBar();
    bench.both(2, 3.25, -66, -60);
    ASSERT_EQ(bench.at(3.5), "Till");
    bench.both(3.5, 4.75, -60, -66);
    EXPECT_EQ(bench.at(4.99), "Till");
    EXPECT_EQ(bench.at(5), "Bar");
}

TEST(DecisionLeadTest, NamesTheRunnerUpAndItsDistance) {
    DecisionBench bench = atTheBar();
    bench.both(1.25, 1.5, -55, -60);
    const NearestChoice choice = bench.decision.choice();
    ASSERT_TRUE(choice.device && choice.runnerUp);
    EXPECT_EQ(choice.device->portName, "Bar");
    EXPECT_EQ(choice.runnerUp->portName, "Till");
    EXPECT_EQ(choice.distance, 5);
}

TEST(DecisionLeadTest, NamesNoRunnerUpThatIsOutside) {
    DecisionBench bench = atTheBar(plainSettings(), -60);
    bench.both(1.25, 1.5, -55, -61);
    EXPECT_FALSE(bench.decision.choice().runnerUp);
    EXPECT_FALSE(bench.decision.choice().distance);
}

}  // namespace

}  // namespace nearcast::nearest
