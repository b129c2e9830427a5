// SPDX-License-Identifier: Apache-2.0
#include "proximity/Calibration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace nearcast {
namespace {

ActionAreaSamples& fill(ActionAreaSamples& samples, const std::vector<std::int32_t>& readings) {
    for (const std::int32_t reading : readings) samples.append(reading);
    return samples;
}

/// Four that are passed over, then the eleven.
std::int32_t secondStrongestOf(std::vector<std::int32_t> lastEleven) {
    lastEleven.insert(lastEleven.begin(), {-20, -20, -20, -20});
    ActionAreaSamples samples;
    return fill(samples, lastEleven).secondStrongest();
}

TEST(ActionAreaSamples, AreEnoughWithTheFifteenth) {
    ActionAreaSamples samples;
    fill(samples, std::vector<std::int32_t>(14, -60));
    EXPECT_FALSE(samples.isEnough());
    EXPECT_EQ(samples.count(), 14U);
    samples.append(-60);
    EXPECT_TRUE(samples.isEnough());
    EXPECT_EQ(samples.count(), 15U);
}

TEST(ActionAreaSamples, IgnoreTheSixteenth) {
    ActionAreaSamples samples;
    fill(samples, std::vector<std::int32_t>(15, -60));
    fill(samples, {-10, -10});
    EXPECT_EQ(samples.count(), 15U);
    EXPECT_EQ(samples.secondStrongest(), -60);
}

TEST(ActionAreaSamples, CountTheStrongestAsTheSecondWhereItOccursTwice) {
    EXPECT_EQ(secondStrongestOf({-60, -55, -70, -55, -58, -65, -66, -67, -68, -69, -71}), -55);
}

TEST(ActionAreaSamples, ThatAreAllTheSameGiveThatValue) {
    EXPECT_EQ(secondStrongestOf(std::vector<std::int32_t>(11, -60)), -60);
}

TEST(ActionAreaSamples, WithOneOutlierGiveTheLevelOfTheOthers) {
    std::vector<std::int32_t> readings(11, -80);
    for (const std::size_t place : {std::size_t{0}, std::size_t{5}, std::size_t{10}}) {
        auto with = readings;
        with[place] = -50;
        EXPECT_EQ(secondStrongestOf(with), -80) << place;
    }
}

TEST(ActionAreaSamples, GiveNoLessThanTheFloor) {
    EXPECT_EQ(secondStrongestOf(std::vector<std::int32_t>(11, -128)), -127);
    EXPECT_EQ(secondStrongestOf(std::vector<std::int32_t>(11, INT32_MIN)), -127);
    std::vector<std::int32_t> one(11, -1000);
    one[3] = -60;
    EXPECT_EQ(secondStrongestOf(one), -127);
}

TEST(ActionAreaSamples, AgreeWithSortingThem) {
    std::mt19937 engine(7);
    for (int count = 0; count < 1000; ++count) {
        std::vector<std::int32_t> readings(11);
        for (auto& reading : readings) reading = static_cast<std::int32_t>(engine() % 60) - 100;
        auto sorted = readings;
        std::sort(sorted.rbegin(), sorted.rend());
        ASSERT_EQ(secondStrongestOf(readings), sorted[1]);
    }
}

}  // namespace
}  // namespace nearcast
