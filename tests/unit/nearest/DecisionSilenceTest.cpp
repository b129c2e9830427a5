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

/// The bar was chosen at -60 dBm and falls silent at 6 s; the till is heard all the time. Areas are wide.
DecisionBench withTheBarGone(std::int32_t tillRSSI) {
    DecisionBench bench(plainSettings(), -90);
    bench.bar(0, -60);
    bench.bar(1, -60);
    for (double at = 0; at < 6; at += DecisionBench::quarter) bench.till(at, tillRSSI);
    EXPECT_EQ(bench.at(5.999), "Bar");
    bench.till(6, tillRSSI);
    return bench;
}

TEST(DecisionSilenceTest, GoesOnAtOnceToADeviceWeakerByTheHysteresis) {
    DecisionBench bench = withTheBarGone(-64);
    EXPECT_EQ(bench.at(6), "Till");
}

TEST(DecisionSilenceTest, LetsAWeakerDeviceWaitForTheTimeOfSilenceOnceMore) {
    DecisionBench bench = withTheBarGone(-65);
    EXPECT_EQ(bench.at(6), "");
    for (double at = 6; at < 11; at += DecisionBench::quarter) bench.till(at, -65);
    EXPECT_EQ(bench.at(10.999), "");
    EXPECT_EQ(bench.at(11), "Till");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::entered);
}

TEST(DecisionSilenceTest, LetsADeviceWaitNoMoreThatGrowsStrongEnough) {
    DecisionBench bench = withTheBarGone(-65);
    EXPECT_EQ(bench.at(6), "");
    bench.till(7, -64);
    EXPECT_EQ(bench.at(7.25), "Till");
}

TEST(DecisionSilenceTest, LetsNobodyWaitForADeviceThatIsHeardAgain) {
    DecisionBench bench = withTheBarGone(-65);
    EXPECT_EQ(bench.at(6.25), "");
    bench.bar(6.5, -80);
    EXPECT_EQ(bench.at(6.75), "Till");
}

TEST(DecisionSilenceTest, LetsAWeakerDeviceWaitThoughTheRegistryChanges) {
    DecisionBench bench = withTheBarGone(-65);
    EXPECT_EQ(bench.at(6), "");
    bench.decision.setRegistry(
        7,
        {{"Attic", recordOf("02:00:00:00:00:0C")}, {"Bar", recordOf(barMAC, -80)}, {"Till", recordOf(tillMAC, -90)}});
    for (double at = 7; at < 11; at += DecisionBench::quarter) bench.till(at, -65);
    EXPECT_EQ(bench.at(10.999), "");
    EXPECT_EQ(bench.at(11), "Till");
}

TEST(DecisionSilenceTest, LetsNobodyWaitForADeviceThatIsRemoved) {
    DecisionBench bench = withTheBarGone(-65);
    EXPECT_EQ(bench.at(6), "");
    bench.decision.setRegistry(7, {{"Till", recordOf(tillMAC, -90)}});
    EXPECT_EQ(bench.at(7.25), "Till");
}

TEST(DecisionSilenceTest, GivesADeviceItsPlaceBackAfterTheDwellTimeWhereItLeadsAgain) {
    DecisionBench bench = withTheBarGone(-60);
    EXPECT_EQ(bench.at(6), "Till");
    bench.both(8, 8.75, -57, -60);
    EXPECT_EQ(bench.at(8.999), "Till");
    bench.both(9, 9, -57, -60);
    EXPECT_EQ(bench.at(9), "Bar");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::led);
}

TEST(DecisionSilenceTest, GivesADeviceNoPlaceBackWithoutALeadBeyondTheMargin) {
    DecisionBench bench = withTheBarGone(-60);
    bench.both(8, 12, -58, -60);
    EXPECT_EQ(bench.at(12), "Till");
}

TEST(DecisionSilenceTest, KeepsAPlaceForAsLongAsAnOldChoiceCounts) {
    DecisionBench bench = withTheBarGone(-60);
    for (double at = 6; at < 35.75; at += DecisionBench::quarter) bench.till(at, -60);
    bench.both(35.75, 36.75, -57, -60);
    EXPECT_EQ(bench.at(36.75), "Bar");
}

TEST(DecisionSilenceTest, KeepsNoPlaceForLongerThanAnOldChoiceCounts) {
    DecisionBench bench = withTheBarGone(-60);
    for (double at = 6; at < 36; at += DecisionBench::quarter) bench.till(at, -60);
    bench.both(36, 37, -57, -60);
    EXPECT_EQ(bench.at(37), "Till");
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
