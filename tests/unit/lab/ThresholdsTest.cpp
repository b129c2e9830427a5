// SPDX-License-Identifier: Apache-2.0
#include "lab/Thresholds.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace nearcast::lab {
namespace {

using Levels = std::map<std::string, double, std::less<>>;

/// Ten seconds at a place; in its later half the levels may be others.
void stayAt(Standing& standing, const std::string& place, const Levels& levels, const Levels& later) {
    standing.begin({0, 10, place});
    for (std::uint64_t sample = 0; sample < 20; ++sample) standing.take({sample, 1}, sample < 10 ? levels : later);
}
void stayAt(Standing& standing, const std::string& place, const Levels& levels) {
    stayAt(standing, place, levels, levels);
}

ThresholdAdvice adviceFor(const std::string& device, const Standing& standing) {
    for (ThresholdAdvice& advice : adviseThresholds(standing)) {
        if (advice.MACAddr == device) return advice;
    }
    ADD_FAILURE() << "no advice for " << device;
    return {};
}

TEST(Stays, LeaveOutTheFirstSecondsAndWhatIsThenTooShort) {
    EXPECT_EQ(staysOf({{0, "A"}, {10, "B"}, {19.99, "A"}}, 40), (std::vector<Stay>{{5, 10, "A"}, {24.99, 40, "A"}}));
    EXPECT_EQ(staysOf({{0, "A"}, {5, "A"}}, 10), (std::vector<Stay>{{5, 10, "A"}}));
    EXPECT_TRUE(staysOf({{0, "A"}}, 9.99).empty());
}

TEST(Thresholds, LieInTheMiddleOfTheGap) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}, {"B", -71}});
    stayAt(standing, "B", {{"A", -61}, {"B", -60}});
    const ThresholdAdvice advice = adviceFor("A", standing);
    EXPECT_EQ(advice.threshold, -55);
    EXPECT_EQ(advice.error(), 0);
    EXPECT_EQ(advice.mistakenAt, "");
    EXPECT_FALSE(advice.inseparable());
    EXPECT_EQ(adviceFor("B", standing).threshold, -65);
}

TEST(Thresholds, ALevelOnTheThresholdIsInside) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}});
    stayAt(standing, "B", {{"A", -51}});
    EXPECT_EQ(adviceFor("A", standing).threshold, -50);
    EXPECT_EQ(adviceFor("A", standing).error(), 0);
}

TEST(Thresholds, WhereNothingIsHeardElsewhereLieFiveDecibelsBelowTheWeakestLevel) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}});
    stayAt(standing, "B", {{"B", -40}});
    EXPECT_EQ(adviceFor("A", standing).threshold, -55);
}

TEST(Thresholds, AreJudgedByTheHalfThatDidNotChooseThem) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}}, {{"A", -80}});
    stayAt(standing, "B", {{"A", -70}}, {{"A", -100}});
    const ThresholdAdvice advice = adviceFor("A", standing);
    EXPECT_TRUE(advice.byHalves);
    // The first half says -60, by which all of the second is outside; the second says -90, by which all is inside.
    EXPECT_EQ(advice.missed, 0.5);
    EXPECT_EQ(advice.intruding, 0.5);
    EXPECT_EQ(advice.mistakenAt, "B");
    EXPECT_EQ(advice.intrudingThere, 0.5);
}

TEST(Thresholds, AreJudgedByStaysWhereThereAreTwoAtTheDevice) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}});
    stayAt(standing, "B", {{"A", -70}});
    stayAt(standing, "A", {{"A", -76}});
    const ThresholdAdvice advice = adviceFor("A", standing);
    EXPECT_FALSE(advice.byHalves);
    EXPECT_EQ(advice.stays, 2U);
    // By the first stay -60 separates, by which the second one is missed.
    EXPECT_EQ(advice.missed, 0.5);
}

TEST(Thresholds, ADeviceThatIsAsStrongElsewhereCannotBeToldApart) {
    Standing standing;
    stayAt(standing, "A", {{"A", -60}, {"B", -60}});
    stayAt(standing, "B", {{"A", -60}, {"B", -60}});
    stayAt(standing, "C", {{"A", -90}, {"B", -90}, {"C", -50}});
    const ThresholdAdvice advice = adviceFor("A", standing);
    EXPECT_EQ(advice.mistakenAt, "B");
    EXPECT_EQ(advice.errorThere(), 0.5);
    EXPECT_EQ(advice.error(), 0.25);
    EXPECT_TRUE(advice.inseparable());
    EXPECT_FALSE(adviceFor("C", standing).inseparable());
}

TEST(Thresholds, AnErrorOfAFifthIsTooMuchAndLessIsNot) {
    ThresholdAdvice advice;
    advice.threshold = -60;
    advice.missed = 0.2;
    advice.intrudingThere = 0.2;
    EXPECT_TRUE(advice.inseparable());
    advice.intrudingThere = 0.19;
    EXPECT_FALSE(advice.inseparable());
}

TEST(Thresholds, StandingAtNoneIsElsewhere) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}});
    stayAt(standing, "", {{"A", -60}});
    EXPECT_EQ(adviceFor("A", standing).threshold, -55);
    EXPECT_EQ(adviceFor("A", standing).mistakenAt, "");
}

TEST(Thresholds, NeedAStayAtTheDeviceAndOneElsewhere) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}, {"B", -60}});
    EXPECT_EQ(adviceFor("A", standing).threshold, std::nullopt);
    EXPECT_FALSE(adviceFor("A", standing).elsewhere);
    EXPECT_EQ(adviceFor("B", standing).threshold, std::nullopt);
    EXPECT_EQ(adviceFor("B", standing).stays, 0U);
}

TEST(Thresholds, ADeviceThatIsNeverHeardHasNone) {
    Standing standing;
    stayAt(standing, "A", {});
    stayAt(standing, "B", {{"B", -70}});
    EXPECT_EQ(adviceFor("A", standing).threshold, std::nullopt);
    EXPECT_EQ(adviceFor("A", standing).stays, 1U);
    EXPECT_EQ(adviceFor("B", standing).threshold, -75);
}

TEST(Thresholds, ADeviceWeakerAtItselfThanElsewhereIsRatherInsideThanOutside) {
    Standing standing;
    stayAt(standing, "A", {{"A", -76}});
    stayAt(standing, "B", {{"A", -70}});
    const ThresholdAdvice advice = adviceFor("A", standing);
    EXPECT_EQ(advice.threshold, -81);
    EXPECT_EQ(advice.missed, 0);
    EXPECT_EQ(advice.intrudingThere, 1);
}

TEST(Thresholds, ADeviceUnheardWhereTheUserStandsAtItIsMissed) {
    Standing standing;
    stayAt(standing, "A", {{"A", -50}}, {});
    stayAt(standing, "B", {{"A", -70}});
    EXPECT_EQ(adviceFor("A", standing).threshold, -60);
    EXPECT_EQ(adviceFor("A", standing).missed, 0.5);
}

}  // namespace
}  // namespace nearcast::lab
