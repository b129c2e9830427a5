// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include "nearest/Device.h"

#include <gtest/gtest.h>

#include <cmath>

namespace nearcast::nearest {

namespace {

TEST(DeviceTest, BeginsWithTheFirstReading) {
    Device device;
    device.hear(0, -70, {});
    EXPECT_EQ(device.level, -70);
}

TEST(DeviceTest, TakesOverARiseByTheAttack) {
    NearestSettings settings;
    settings.attack = 0.5;
    Device device;
    device.hear(0, -70, settings);
    device.hear(0.1, -60, settings);
    EXPECT_EQ(device.level, -65);
}

TEST(DeviceTest, FollowsAFallWithTheTimeConstant) {
    NearestSettings settings;
    settings.decay = 2;
    Device device;
    device.hear(0, -60, settings);
    device.hear(2, -70, settings);
    EXPECT_NEAR(*device.level, -70 + 10 * std::exp(-1.0), 1e-12);
}

TEST(DeviceTest, FallsAsFarHoweverOftenItIsHeard) {
    Device often;
    Device seldom;
    for (Device* device : {&often, &seldom}) device->hear(0, -60, {});
    for (int step = 1; step <= 8; ++step) often.hear(step * 0.25, -70, {});
    seldom.hear(2, -70, {});
    EXPECT_NEAR(*often.level, *seldom.level, 1e-9);
}

TEST(DeviceTest, DecidesByReportsAgainOnceRawReadingsHaveEnded) {
    Device device;
    device.hear(0, -50, {});
    device.report(4.9, -60, {});
    EXPECT_NE(device.level, -60);
    device.report(5, -60, {});
    EXPECT_EQ(device.level, -60);
}

TEST(DeviceTest, ExpectsALevelThatRoseToRiseOn) {
    NearestSettings settings;
    settings.anticipation = 0.5;
    settings.decay = 2;
    Device device;
    device.hear(0, -70, settings);
    EXPECT_EQ(device.expected(settings), -70);
    device.hear(2, -60, settings);
    EXPECT_NEAR(device.expected(settings), -60 + 0.5 * 10 * std::exp(-1.0), 1e-12);
}

}  // namespace

}  // namespace nearcast::nearest
