// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

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
