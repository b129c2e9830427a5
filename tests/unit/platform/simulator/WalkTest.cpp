// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace nearcast::simulator {

namespace {

constexpr double tiny = 1e-6;

User user(std::vector<Waypoint> path, bool loop, double speed = 2) {
    User result;
    result.path = std::move(path);
    result.loop = loop;
    result.speed = speed;
    return result;
}

/// From (0, 0) along x to (4, 0), where the user stands for 3 s, and on to (4, 6): 2 s, 3 s, 3 s.
std::vector<Waypoint> corner() { return {{{0, 0}, 0, {}}, {{4, 0}, 3, {}}, {{4, 6}, 0, {}}}; }

void expectAt(const Walk& walk, double seconds, Place place, double degrees) {
    const Stance stance = walk.at(seconds);
    EXPECT_NEAR(stance.at.x, place.x, 1e-4) << "at " << seconds;
    EXPECT_NEAR(stance.at.y, place.y, 1e-4) << "at " << seconds;
    EXPECT_NEAR(stance.facing * 180 / std::numbers::pi, degrees, 1e-6) << "at " << seconds;
}

TEST(Walk, GoesAtItsSpeedAndPauses) {
    const Walk walk(user(corner(), false));
    EXPECT_DOUBLE_EQ(walk.period(), 8);
    expectAt(walk, 0, {0, 0}, 0);
    expectAt(walk, 1, {2, 0}, 0);
    expectAt(walk, 2, {4, 0}, 0);
    expectAt(walk, 4.9, {4, 0}, 0);
    expectAt(walk, 6.5, {4, 3}, 90);
}

TEST(Walk, TurnsAtTheMomentWhenAPauseEnds) {
    const Walk walk(user(corner(), false));
    expectAt(walk, 5 - tiny, {4, 0}, 0);
    expectAt(walk, 5, {4, 0}, 90);
    expectAt(walk, 5 + tiny, {4, 0}, 90);
}

TEST(Walk, StaysAtTheLastPlaceWithoutALoop) {
    const Walk walk(user(corner(), false));
    expectAt(walk, 8 - tiny, {4, 6}, 90);
    expectAt(walk, 8, {4, 6}, 90);
    expectAt(walk, 1e6, {4, 6}, 90);
}

TEST(Walk, WalksBackToTheFirstPlaceInALoop) {
    const Walk walk(user(corner(), true));
    const double back = std::sqrt(52.0) / 2;
    EXPECT_DOUBLE_EQ(walk.period(), 8 + back);
    expectAt(walk, 8 + back / 2, {2, 3}, std::atan2(-6, -4) * 180 / std::numbers::pi);
    expectAt(walk, walk.period() - tiny, {0, 0}, std::atan2(-6, -4) * 180 / std::numbers::pi);
    expectAt(walk, walk.period() + tiny, {0, 0}, 0);
    expectAt(walk, 3 * walk.period() + 1, {2, 0}, 0);
}

TEST(Walk, FacesWhereAPauseSays) {
    auto path = corner();
    path[1].facing = -135;
    const Walk walk(user(path, false));
    expectAt(walk, 2 - tiny, {4, 0}, 0);
    expectAt(walk, 2 + tiny, {4, 0}, -135);
    expectAt(walk, 5, {4, 0}, 90);
}

TEST(Walk, TurnsOnTheSpotBetweenTwoPausesAtOnePlace) {
    const Walk walk(user({{{1, 1}, 2, 10}, {{1, 1}, 2, 20}}, true));
    EXPECT_DOUBLE_EQ(walk.period(), 4);
    expectAt(walk, 2 - tiny, {1, 1}, 10);
    expectAt(walk, 2, {1, 1}, 20);
    expectAt(walk, 4, {1, 1}, 10);
}

TEST(Walk, FacesAtFirstWhereTheLoopCameFromOrTheWayGoes) {
    std::vector<Waypoint> path = {{{0, 0}, 1, {}}, {{0, 2}, 0, {}}};
    expectAt(Walk(user(path, true)), 0, {0, 0}, -90);
    expectAt(Walk(user(path, false)), 0, {0, 0}, 90);
}

TEST(Walk, StandsWhereThereIsOnePlace) {
    for (const bool loop : {false, true}) {
        for (const double pause : {0.0, 5.0}) {
            const Walk walk(user({{{3, 4}, pause, 30}}, loop));
            for (const double seconds : {0.0, 5.0, 5000.0}) expectAt(walk, seconds, {3, 4}, 30);
        }
    }
}

TEST(Walk, StandsWhereAllPlacesAreOne) {
    const Walk walk(user({{{3, 4}, 0, {}}, {{3, 4}, 0, {}}}, true));
    EXPECT_EQ(walk.period(), 0);
    expectAt(walk, 17, {3, 4}, 0);
}

TEST(Walk, NeverJumps) {
    const Walk walk(user({{{0, 0}, 1, {}}, {{5, 1}, 0, 12}, {{5, 1}, 2, 50}, {{2, 8}, 0, {}}}, true, 1.3));
    Place before = walk.at(0).at;
    for (double seconds = 0; seconds < 3 * walk.period(); seconds += 0.01) {
        const Place now = walk.at(seconds).at;
        ASSERT_LE(std::hypot(now.x - before.x, now.y - before.y), 1.3 * 0.01 + 1e-9) << seconds;
        before = now;
    }
}

}  // namespace

}  // namespace nearcast::simulator
