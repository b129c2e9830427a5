// SPDX-License-Identifier: Apache-2.0
#include "nearest/Surroundings.h"

#include <gtest/gtest.h>

namespace nearcast::nearest {

namespace {

TEST(NextLevelsTest, HaveNoMeanWhereThereAreNoOthers) { EXPECT_FALSE(NextLevels().mean()); }

TEST(NextLevelsTest, TakeWhatThereIs) {
    NextLevels next;
    next.add(-70);
    EXPECT_EQ(next.mean(), -70);
    next.add(-80);
    EXPECT_EQ(next.mean(), -75);
}

TEST(NextLevelsTest, TakeTheHighestThree) {
    NextLevels next;
    for (const double level : {-99.0, -70.0, -80.0, -98.0, -60.0, -80.0}) next.add(level);
    EXPECT_EQ(next.mean(), -70);
}

TEST(SurroundingsTest, WeighALeadByThePowerWithinBounds) {
    const NearestSettings settings;
    const Surroundings surroundings(settings);  // close is -60 dBm at first
    EXPECT_EQ(surroundings.weight(-60, settings), 1);
    EXPECT_EQ(surroundings.weight(-57, settings), 2);
    EXPECT_EQ(surroundings.weight(-63, settings), 0.5);
    EXPECT_EQ(surroundings.weight(-20, settings), 8);
    EXPECT_EQ(surroundings.weight(-100, settings), 0.0625);
}

/// A place that was heard for ten minutes, and 10 dB are usual.
Surroundings after(double strongest, std::optional<double> next, const NearestSettings& settings) {
    Surroundings surroundings(settings);
    for (int second = 0; second < 600; ++second) surroundings.learn(1, strongest, next, settings);
    return surroundings;
}

NearestSettings tenUsual() {
    NearestSettings settings;
    settings.closeTime = 10;
    settings.contrast = 10;
    return settings;
}

TEST(SurroundingsTest, LearnWhatIsCloseFromTheStrongest) {
    const NearestSettings settings = tenUsual();
    EXPECT_NEAR(after(-75, -80, settings).weight(-75, settings), 1, 1e-9);
}

TEST(SurroundingsTest, TakeLeadsAsTheyAreUntilTheStrongestStandsOut) {
    const NearestSettings settings = tenUsual();
    EXPECT_EQ(after(-60, -65, settings).clarity(settings), 1);
    EXPECT_NEAR(after(-60, -70, settings).clarity(settings), 1, 1e-9);
}

TEST(SurroundingsTest, CountLeadsBySquareWhereItStandsOut) {
    const NearestSettings settings = tenUsual();
    EXPECT_NEAR(after(-60, -71, settings).clarity(settings), 1.21, 1e-9);
    EXPECT_NEAR(after(-60, -75, settings).clarity(settings), 2.25, 1e-9);
}

TEST(SurroundingsTest, CountLeadsFourTimesAtMost) {
    const NearestSettings settings = tenUsual();
    EXPECT_NEAR(after(-60, -79.9, settings).clarity(settings), 3.96, 1e-2);
    EXPECT_EQ(after(-60, -80.1, settings).clarity(settings), 4);
    EXPECT_EQ(after(-60, -110, settings).clarity(settings), 4);
}

TEST(SurroundingsTest, LearnNothingOfTheContrastFromADeviceAlone) {
    const NearestSettings settings = tenUsual();
    Surroundings surroundings = after(-60, -75, settings);
    surroundings.learn(100, -60, std::nullopt, settings);
    EXPECT_NEAR(surroundings.clarity(settings), 2.25, 1e-9);
}

TEST(SurroundingsTest, WeighALeadByLessOfThePowerWhereLeadsAreClear) {
    const NearestSettings settings = tenUsual();
    const Surroundings surroundings = after(-60, -110, settings);
    EXPECT_NEAR(surroundings.weight(-72, settings), 0.5, 1e-9);
}

}  // namespace

}  // namespace nearcast::nearest
