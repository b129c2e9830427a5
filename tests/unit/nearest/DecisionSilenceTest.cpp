// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

namespace nearcast::nearest {

namespace {

DecisionBench withTheBarChosen(const NearestSettings& settings = plainSettings()) {
    DecisionBench bench(settings);
    bench.bar(0, -60);
    bench.bar(1, -60);
    bench.decision.pass(1);
    return bench;
}

TEST(DecisionSilenceTest, DropsADeviceUnheardForTheTimeOfSilence) {
    DecisionBench bench = withTheBarChosen();
    EXPECT_EQ(bench.at(5.999), "Bar");
    EXPECT_EQ(bench.at(6), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::silent);
}

TEST(DecisionSilenceTest, GoesOnAtOnceToAnotherInside) {
    DecisionBench bench = withTheBarChosen();
    for (double at = 1; at <= 6; at += 0.25) bench.till(at, -60);
    EXPECT_EQ(bench.at(6), "Till");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::silent);
}

TEST(DecisionSilenceTest, CountsAReportAsHeardToo) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.reported(5, "Bar", barMAC, -60);
    EXPECT_EQ(bench.at(9.999), "Bar");
    EXPECT_EQ(bench.at(10), "");
}

TEST(DecisionSilenceTest, TakesAReadingThatCannotBeForHeardAndNothingMore) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.heard(5, barMAC, 21);
    bench.till(5, 42);
    EXPECT_EQ(bench.at(9.999), "Bar");
    EXPECT_EQ(bench.decision.chosen()->level, -60);
    EXPECT_EQ(bench.at(10), "");
}

TEST(DecisionSilenceTest, TakesTheStrongestReadingThatCanBe) {
    DecisionBench bench;
    bench.decision.heard(0, barMAC, 20);
    EXPECT_EQ(bench.at(1), "Bar");
    EXPECT_EQ(bench.decision.chosen()->level, 20);
}

TEST(DecisionSilenceTest, LetsADeviceThatComesBackBeginAnew) {
    DecisionBench bench = withTheBarChosen();
    bench.bar(7, -60);
    EXPECT_EQ(bench.at(7.999), "");
    EXPECT_EQ(bench.at(8), "Bar");
}

TEST(DecisionSilenceTest, KeepsTheChoiceAsStaleWhileTheRadioCannotHear) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRadio(2, false, 2);
    EXPECT_EQ(bench.at(31.999), "Bar");
    EXPECT_TRUE(bench.decision.choice().stale);
}

TEST(DecisionSilenceTest, EndsAStaleChoiceAfterItsTime) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRadio(2, false, 2);
    EXPECT_EQ(bench.at(32), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::blind);
    EXPECT_FALSE(bench.decision.choice().stale);
}

TEST(DecisionSilenceTest, DropsTheChoiceAtOnceWhereNothingMayBeStale) {
    NearestSettings settings = plainSettings();
    settings.staleFor = 0;
    DecisionBench bench = withTheBarChosen(settings);
    bench.decision.setRadio(2, false, 2);
    EXPECT_EQ(bench.at(2), "");
}

TEST(DecisionSilenceTest, GivesADeviceTheTimeOfSilenceOnceTheRadioHearsAgain) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRadio(2, false, 2);
    bench.decision.setRadio(20, true, 20);
    EXPECT_EQ(bench.at(24.999), "Bar");
    EXPECT_TRUE(bench.decision.choice().stale);
    EXPECT_EQ(bench.at(25), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::silent);
}

TEST(DecisionSilenceTest, IsNotStaleAnyMoreOnceTheDeviceIsHeard) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRadio(2, false, 2);
    bench.decision.setRadio(20, true, 20);
    bench.bar(21, -60);
    EXPECT_FALSE(bench.decision.choice().stale);
    EXPECT_EQ(bench.decision.choice().device->portName, "Bar");
}

TEST(DecisionSilenceTest, CountsTheGoingAndComingOfStalenessAsChanges) {
    DecisionBench bench = withTheBarChosen();
    const auto before = bench.decision.changes();
    bench.decision.setRadio(2, false, 2);
    EXPECT_EQ(bench.decision.changes(), before + 1);
    bench.decision.setRadio(3, true, 3);
    EXPECT_EQ(bench.decision.changes(), before + 1);
    bench.bar(4, -60);
    EXPECT_EQ(bench.decision.changes(), before + 2);
}

TEST(DecisionSilenceTest, ChoosesNobodyNotHeardSinceTheRadioHearsAgain) {
    DecisionBench bench = withTheBarChosen();
    bench.till(1, -60);
    bench.till(2, -60);
    bench.decision.setRadio(2.5, false, 2.5);
    bench.decision.setRadio(20, true, 20);
    bench.bar(21, -99);
    bench.bar(22.5, -99);
    EXPECT_EQ(bench.at(23), "");
}

TEST(DecisionSilenceTest, KnowsWhenTheChosenDeviceWouldFallSilent) {
    DecisionBench bench = withTheBarChosen();
    EXPECT_FALSE(bench.decision.wouldFallSilent(5.999));
    EXPECT_TRUE(bench.decision.wouldFallSilent(6));
    bench.decision.setRadio(2, false, 2);
    EXPECT_FALSE(bench.decision.wouldFallSilent(6));
}

}  // namespace

}  // namespace nearcast::nearest
