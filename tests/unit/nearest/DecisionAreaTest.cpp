// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

namespace nearcast::nearest {

namespace {

TEST(DecisionAreaTest, ChoosesNobodyBeforeAnythingIsHeard) {
    DecisionBench bench;
    EXPECT_EQ(bench.at(100), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::noneInside);
}

TEST(DecisionAreaTest, ChoosesADeviceWhoseSignalReachesItsThresholdForTheDwellTime) {
    DecisionBench bench;
    bench.bar(0, -60);
    EXPECT_EQ(bench.at(0.999), "");
    EXPECT_EQ(bench.at(1), "Bar");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::entered);
}

TEST(DecisionAreaTest, PassesOverADeviceOneDecibelBelowItsThreshold) {
    DecisionBench bench;
    bench.both(0, 4, -61, -61);
    EXPECT_EQ(bench.at(4), "");
}

TEST(DecisionAreaTest, CountsTheDwellTimeAnewWhenTheSignalFellBelowTheThreshold) {
    DecisionBench bench;
    bench.bar(0, -60);
    bench.bar(0.75, -90);
    bench.bar(1, -60);
    EXPECT_EQ(bench.at(1.75), "");
    EXPECT_EQ(bench.at(2), "Bar");
}

TEST(DecisionAreaTest, KeepsADeviceThatIsBelowItsThresholdByTheHysteresis) {
    DecisionBench bench;
    bench.bar(0, -60);
    ASSERT_EQ(bench.at(1), "Bar");
    for (double at = 1.25; at <= 6; at += 0.25) bench.bar(at, -64);
    EXPECT_EQ(bench.at(6), "Bar");
}

TEST(DecisionAreaTest, LeavesADeviceThatIsBelowByMoreThanTheHysteresisForTheDwellTime) {
    DecisionBench bench;
    bench.bar(0, -60);
    ASSERT_EQ(bench.at(1), "Bar");
    bench.bar(2, -99);
    EXPECT_EQ(bench.at(2.999), "Bar");
    EXPECT_EQ(bench.at(3), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::left);
}

TEST(DecisionAreaTest, KeepsAChoiceForTheDwellTimeThoughItsSignalFell) {
    NearestSettings settings = plainSettings();
    settings.dwell = 3;
    DecisionBench bench(settings);
    bench.bar(0, -60);
    ASSERT_EQ(bench.at(3), "Bar");
    bench.bar(3, -99);
    EXPECT_EQ(bench.at(5.999), "Bar");
    EXPECT_EQ(bench.at(6), "");
}

TEST(DecisionAreaTest, ChoosesTheStrongestOfThoseInside) {
    DecisionBench bench;
    bench.both(0, 1, -58, -50);
    EXPECT_EQ(bench.at(1), "Till");
}

TEST(DecisionAreaTest, WaitsForAStrongerDeviceThatHasJustEntered) {
    DecisionBench bench;
    bench.bar(0, -58);
    bench.till(0.5, -50);
    EXPECT_EQ(bench.at(1.25), "");
    EXPECT_EQ(bench.at(1.5), "Till");
}

TEST(DecisionAreaTest, GoesToTheOtherDeviceInsideWhenTheChosenOneIsLeft) {
    DecisionBench bench;
    bench.both(0, 1, -50, -58);
    ASSERT_EQ(bench.at(1), "Bar");
    bench.both(1.25, 2.25, -99, -58);
    EXPECT_EQ(bench.at(2.25), "Till");
}

TEST(DecisionAreaTest, UsesTheDefaultThresholdForARecordWithoutOne) {
    NearestSettings settings = plainSettings();
    settings.defaultThreshold = -70;
    Decision decision(settings);
    decision.setRegistry(0, {{"Bar", recordOf(barMAC)}, {"Till", recordOf(tillMAC)}});
    decision.heard(0, barMAC, -70);
    decision.heard(0, tillMAC, -71);
    decision.pass(1);
    ASSERT_NE(decision.chosen(), nullptr);
    EXPECT_EQ(decision.chosen()->portName, "Bar");
    decision.heard(1, barMAC, -99);
    decision.heard(2, tillMAC, -71);
    decision.pass(3);
    EXPECT_EQ(decision.chosen(), nullptr);
}

TEST(DecisionAreaTest, DecidesByTheSmoothedReportsWhereThereAreNoRawReadings) {
    DecisionBench bench;
    EXPECT_TRUE(bench.decision.reported(0, "Bar", barMAC, -50));
    EXPECT_TRUE(bench.decision.reported(0.5, "Bar", barMAC, -60));
    EXPECT_EQ(bench.at(1), "Bar");
    EXPECT_EQ(bench.decision.chosen()->level, -60);
}

TEST(DecisionAreaTest, LetsAReportNotOverruleTheRawReadings) {
    DecisionBench bench;
    bench.decision.heard(0, barMAC, -70);
    EXPECT_TRUE(bench.decision.reported(0, "Bar", barMAC, -50));
    EXPECT_EQ(bench.at(1), "");
}

TEST(DecisionAreaTest, TakesTimesThatGoBackAsTheLatestKnown) {
    DecisionBench bench;
    bench.bar(10, -60);
    EXPECT_EQ(bench.at(3), "");
    EXPECT_EQ(bench.at(11), "Bar");
}

}  // namespace

}  // namespace nearcast::nearest
