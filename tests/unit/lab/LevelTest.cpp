// SPDX-License-Identifier: Apache-2.0
#include "lab/Level.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace nearcast::lab {
namespace {

/// The level's value after readings at seconds 0, 1, 2 and so on, at the time of the last one.
template <class OneLevel>
std::optional<double> after(const std::vector<std::int32_t>& readings, OneLevel level = OneLevel()) {
    double at = -1;
    for (const std::int32_t RSSI : readings) level.add(++at, RSSI);
    return level.value(at);
}

TEST(LatestLevel, IsTheLatestReading) {
    EXPECT_EQ(after<LatestLevel>({}), std::nullopt);
    EXPECT_EQ(after<LatestLevel>({-60}), -60);
    EXPECT_EQ(after<LatestLevel>({-60, -90}), -90);
}

TEST(MaximumLevel, IsTheStrongestOfTheReadingsThereAre) {
    EXPECT_EQ(after<MaximumLevel>({}), std::nullopt);
    EXPECT_EQ(after<MaximumLevel>({-70}), -70);
    EXPECT_EQ(after<MaximumLevel>({-70, -60, -80}), -60);
}

TEST(MaximumLevel, AReadingCountsUntilTheSeventhAfterIt) {
    EXPECT_EQ(after<MaximumLevel>({-50, -70, -70, -70, -70, -70, -70}), -50);
    EXPECT_EQ(after<MaximumLevel>({-50, -70, -70, -70, -70, -70, -70, -70}), -70);
}

TEST(MedianLevel, IsTheMiddleReadingOrBetweenTheTwoInTheMiddle) {
    EXPECT_EQ(after<MedianLevel>({}), std::nullopt);
    EXPECT_EQ(after<MedianLevel>({-70}), -70);
    EXPECT_EQ(after<MedianLevel>({-70, -61}), -65.5);
    EXPECT_EQ(after<MedianLevel>({-70, -90, -61}), -70);
}

TEST(MedianLevel, AReadingCountsUntilTheSeventhAfterIt) {
    EXPECT_EQ(after<MedianLevel>({-50, -50, -50, -50, -80, -80, -80}), -50);
    EXPECT_EQ(after<MedianLevel>({-50, -50, -50, -50, -80, -80, -80, -80}), -80);
}

TEST(TrimmedMeanLevel, WithFourReadingsNothingIsCutAndWithFiveOneAtEachEnd) {
    EXPECT_EQ(after<TrimmedMeanLevel>({}), std::nullopt);
    EXPECT_EQ(after<TrimmedMeanLevel>({-60, -70, -80, -90}), -75);
    EXPECT_EQ(after<TrimmedMeanLevel>({-20, -60, -71, -79, -120}), -70);
}

TEST(TrimmedMeanLevel, WithNineReadingsOneIsCutAtEachEndAndWithTenTwo) {
    EXPECT_EQ(after<TrimmedMeanLevel>({-10, -60, -60, -60, -60, -60, -60, -60, -60}), -60);
    EXPECT_EQ(after<TrimmedMeanLevel>({-10, -46, -60, -60, -60, -60, -60, -60, -60}), -58);
    EXPECT_EQ(after<TrimmedMeanLevel>({-10, -46, -60, -60, -60, -60, -60, -60, -60, -60}), -60);
}

TEST(TrimmedMeanLevel, AReadingCountsUntilItIsTwentySecondsOld) {
    TrimmedMeanLevel level;
    level.add(0, -50);
    level.add(10, -70);
    EXPECT_EQ(level.value(19.999), -60);
    EXPECT_EQ(level.value(20), -70);
    EXPECT_EQ(level.value(29.999), -70);
    EXPECT_EQ(level.value(30), std::nullopt);
}

TEST(TrimmedMeanLevel, KeepsNoMoreReadingsThanItMay) {
    TrimmedMeanLevel level;
    for (std::size_t count = 0; count < TrimmedMeanLevel::most; ++count) level.add(0, -90);
    EXPECT_EQ(level.value(0), -90);
    for (std::size_t count = 0; count < TrimmedMeanLevel::most; ++count) level.add(1, -50);
    EXPECT_EQ(level.value(1), -50);
}

TEST(ExponentialLevel, BeginsWithTheFirstReadingAndMovesByATenth) {
    EXPECT_EQ(after<ExponentialLevel>({}), std::nullopt);
    EXPECT_EQ(after<ExponentialLevel>({-60}), -60);
    EXPECT_DOUBLE_EQ(*after<ExponentialLevel>({-60, -80}), -62);
    EXPECT_DOUBLE_EQ(*after<ExponentialLevel>({-60, -80, -60}), -61.8);
}

TEST(KalmanLevel, BeginsWithTheFirstReadingAndWeighsTheSecondByTheVariances) {
    EXPECT_EQ(after({}, KalmanLevel({4, 16})), std::nullopt);
    EXPECT_EQ(after({-60}, KalmanLevel({4, 16})), -60);
    // The first estimate varies by 16; a second later by 20, so that the reading counts 20 / (20 + 16).
    EXPECT_DOUBLE_EQ(*after({-60, -78}, KalmanLevel({4, 16})), -70);
}

TEST(KalmanLevel, TheLongerNothingWasHeardTheMoreAReadingCounts) {
    KalmanLevel soon({4, 16});
    KalmanLevel late({4, 16});
    soon.add(0, -60);
    late.add(0, -60);
    soon.add(0, -80);
    late.add(4, -80);
    EXPECT_DOUBLE_EQ(*soon.value(0), -70);
    EXPECT_DOUBLE_EQ(*late.value(4), -60 - 20 * 32 / 48.0);
}

TEST(KalmanLevel, TheQuickOneFollowsAStepSoonerThanTheCalmOne) {
    const std::vector<std::int32_t> step{-80, -80, -80, -80, -80, -80, -60, -60, -60};
    const double quick = *after(step, KalmanLevel(KalmanLevel::quick));
    const double calm = *after(step, KalmanLevel(KalmanLevel::calm));
    EXPECT_GT(quick, -66);
    EXPECT_LT(calm, -72);
    EXPECT_GT(calm, -80);
}

}  // namespace
}  // namespace nearcast::lab
