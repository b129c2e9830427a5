// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Walk.h"

#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

namespace nearcast::simulator {

namespace {

Scene passing(std::vector<Dongle> dongles) {
    Scene scene = quietScene(std::move(dongles));
    scene.user.path = {{{0, 0}, 0, {}}, {{10, 0}, 0, {}}};
    scene.user.speed = 1;
    scene.user.loop = false;
    return scene;
}

std::optional<Nearest> truth(const Scene& scene, double seconds) {
    return nearestDongle(scene, Walk(scene.user), seconds);
}

TEST(GroundTruth, FollowsTheUser) {
    const Scene scene = passing({dongle(1, {8, 3}), dongle(2, {0, 4}), dongle(3, {50, 50})});
    const auto first = truth(scene, 0);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->dongle, 1U);
    EXPECT_DOUBLE_EQ(first->distance, 4);
    EXPECT_EQ(first->second, 0U);
    EXPECT_DOUBLE_EQ(first->secondDistance, std::sqrt(73.0));
    const auto last = truth(scene, 8);
    EXPECT_EQ(last->dongle, 0U);
    EXPECT_DOUBLE_EQ(last->distance, 3);
    EXPECT_EQ(last->second, 1U);
}

TEST(GroundTruth, ChangesHalfWay) {
    const Scene scene = passing({dongle(1, {2, 0}), dongle(2, {6, 0})});
    EXPECT_EQ(truth(scene, 3.999)->dongle, 0U);
    EXPECT_EQ(truth(scene, 4)->dongle, 0U) << "of two at one distance the first";
    EXPECT_EQ(truth(scene, 4.001)->dongle, 1U);
}

TEST(GroundTruth, KnowsNoSecondOfOneDongleAndNothingOfNone) {
    EXPECT_FALSE(truth(passing({dongle(1, {2, 0})}), 0)->second);
    EXPECT_FALSE(truth(passing({}), 0));
}

TEST(GroundTruth, CountsWallsAndSwitchesForNothing) {
    Scene scene = passing({dongle(1, {0, 2}), dongle(2, {0, 3})});
    scene.floor.walls = {{"", {{0, 1}, {5, 1}}, 50}};
    scene.dongles[0].off = {{0, 100}};
    EXPECT_EQ(truth(scene, 0)->dongle, 0U);
}

}  // namespace

}  // namespace nearcast::simulator
