// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

namespace nearcast::nearest {

namespace {

/// What is said of the bar's device.
NearestExplanation ofBar(const DecisionBench& bench, double at) { return bench.decision.explain(at).at(0); }
NearestExplanation ofTill(const DecisionBench& bench, double at) { return bench.decision.explain(at).at(1); }

TEST(DecisionExplainTest, SaysThatADeviceWasNotHeard) {
    const DecisionBench bench;
    EXPECT_EQ(ofBar(bench, 0).missing, "not heard");
    EXPECT_EQ(ofBar(bench, 0).met, "");
    EXPECT_FALSE(ofBar(bench, 0).level);
}

TEST(DecisionExplainTest, SaysForHowLongADeviceIsUnheard) {
    DecisionBench bench;
    bench.bar(1, -70);
    bench.decision.pass(13.5);
    EXPECT_EQ(ofBar(bench, 13.5).missing, "unheard for 12.5 s");
}

TEST(DecisionExplainTest, SaysHowMuchIsMissingToTheThreshold) {
    DecisionBench bench;
    bench.bar(1, -67);
    EXPECT_EQ(ofBar(bench, 1).missing, "7 dB to its threshold");
}

TEST(DecisionExplainTest, SaysHowMuchOfTheDwellTimeIsMissing) {
    DecisionBench bench;
    bench.bar(1, -60);
    EXPECT_EQ(ofBar(bench, 1.25).met, "inside for 0.3 s");
    EXPECT_EQ(ofBar(bench, 1.5).missing, "0.5 s of the dwell time");
}

TEST(DecisionExplainTest, SaysSinceWhenAndWhyTheChosenOneIs) {
    DecisionBench bench;
    bench.bar(0, -60);
    bench.decision.pass(1);
    EXPECT_TRUE(ofBar(bench, 3.5).chosen);
    EXPECT_EQ(ofBar(bench, 3.5).met, "chosen for 2.5 s: entered");
    EXPECT_EQ(ofBar(bench, 3.5).missing, "");
}

TEST(DecisionExplainTest, SaysHowFarADeviceIsBehindTheChosenOne) {
    DecisionBench bench;
    bench.both(0, 1.25, -55, -60);
    EXPECT_EQ(ofTill(bench, 1.25).met, "inside for 1.3 s");
    EXPECT_EQ(ofTill(bench, 1.25).missing, "5 dB behind Bar");
}

TEST(DecisionExplainTest, SaysHowFarALeadHasAddedUp) {
    DecisionBench bench(plainSettings(), std::nullopt);
    bench.both(0, 1, -60, -61);
    bench.both(1.25, 2.25, -66, -60);
    EXPECT_EQ(ofTill(bench, 2.25).met, "inside for 2.3 s, leads by 6 dB (4 of 6 dB s)");
    EXPECT_EQ(ofTill(bench, 2.25).missing, "2 dB s of lead");
}

TEST(DecisionExplainTest, SaysWhatALeadLacksToTheMargin) {
    DecisionBench bench;
    bench.both(0, 1, -55, -60);
    bench.both(1.25, 2.25, -61, -60);
    EXPECT_EQ(ofTill(bench, 2.25).missing, "1 dB to the margin");
}

TEST(DecisionExplainTest, GivesTheRawAndTheSmoothedSignal) {
    DecisionBench bench;
    bench.decision.heard(1, barMAC, -67);
    bench.decision.reported(1, "Bar", barMAC, -63);
    EXPECT_EQ(ofBar(bench, 1).raw, -67);
    EXPECT_EQ(ofBar(bench, 1).smoothed, -63);
    EXPECT_EQ(ofBar(bench, 1).level, -67);
    EXPECT_EQ(ofBar(bench, 1).threshold, -60);
}

TEST(DecisionExplainTest, SaysForHowLongADeviceWaitsForOneThatFellSilent) {
    DecisionBench bench(plainSettings(), -90);
    bench.bar(0, -60);
    bench.bar(1, -60);
    for (double at = 0; at < 8; at += DecisionBench::quarter) bench.till(at, -70);
    ASSERT_EQ(bench.at(7.75), "");
    EXPECT_EQ(ofTill(bench, 8.5).missing, "waits 2.5 s for Bar, which was stronger");
}

}  // namespace

}  // namespace nearcast::nearest
