// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Geometry.h"

#include <gtest/gtest.h>

#include <numbers>

namespace nearcast::simulator {

namespace {

constexpr double pi = std::numbers::pi;

Wall wall(std::vector<Place> points, double loss = 1) { return {"", std::move(points), loss}; }

TEST(Geometry, MeasuresDistancesAndDirections) {
    EXPECT_DOUBLE_EQ(distance({1, 1}, {4, 5}), 5);
    EXPECT_DOUBLE_EQ(distance({4, 5}, {4, 5}), 0);
    EXPECT_DOUBLE_EQ(direction({1, 1}, {2, 1}), 0);
    EXPECT_DOUBLE_EQ(direction({1, 1}, {1, 2}), pi / 2);
    EXPECT_DOUBLE_EQ(direction({1, 1}, {1, 0}), -pi / 2);
    EXPECT_DOUBLE_EQ(direction({1, 1}, {1, 1}), 0);
}

TEST(Geometry, FindsThePlaceAPartOfTheWay) {
    EXPECT_EQ(between({0, 2}, {4, 0}, 0), (Place{0, 2}));
    EXPECT_EQ(between({0, 2}, {4, 0}, 0.25), (Place{1, 1.5}));
    EXPECT_EQ(between({0, 2}, {4, 0}, 1), (Place{4, 0}));
}

TEST(Geometry, CountsWhereAPathCrossesAWall) {
    const Wall upright = wall({{5, 0}, {5, 10}});
    EXPECT_EQ(crossings(upright, {0, 5}, {10, 5}), 1);
    EXPECT_EQ(crossings(upright, {10, 5}, {0, 5}), 1);
    EXPECT_EQ(crossings(upright, {0, 5}, {4.999, 5}), 0) << "ends before the wall";
    EXPECT_EQ(crossings(upright, {0, 5}, {5.001, 5}), 1) << "ends behind the wall";
    EXPECT_EQ(crossings(upright, {0, 10.001}, {10, 10.001}), 0) << "passes beside its end";
    EXPECT_EQ(crossings(upright, {0, 9.999}, {10, 9.999}), 1);
    EXPECT_EQ(crossings(upright, {5, 0}, {5, 10}), 0) << "runs along the wall";
    EXPECT_EQ(crossings(upright, {3, 3}, {3, 3}), 0) << "goes nowhere";
}

TEST(Geometry, CountsACornerOnce) {
    const Wall straightOn = wall({{5, 0}, {5, 5}, {5, 10}});
    EXPECT_EQ(crossings(straightOn, {0, 5}, {10, 5}), 1);
    const Wall corner = wall({{0, 0}, {5, 5}, {10, 0}});
    EXPECT_EQ(crossings(corner, {5, 0}, {5, 10}), 1);
}

TEST(Geometry, CountsEveryPieceThatIsCrossed) {
    const Wall box = wall({{4, 4}, {6, 4}, {6, 6}, {4, 6}, {4, 4}});
    EXPECT_EQ(crossings(box, {0, 5}, {10, 5}), 2) << "through";
    EXPECT_EQ(crossings(box, {5, 5}, {10, 5}), 1) << "out";
    EXPECT_EQ(crossings(box, {4.5, 5}, {5.5, 5}), 0) << "within";
    EXPECT_EQ(crossings(box, {0, 7}, {10, 7}), 0) << "past";
}

TEST(Geometry, AddsTheLossesOfAllWallsCrossed) {
    Floor floor;
    floor.walls = {wall({{2, 0}, {2, 10}}, 3), wall({{4, 0}, {4, 10}}, 5), wall({{8, 0}, {8, 10}}, 100)};
    EXPECT_DOUBLE_EQ(wallLoss(floor, {0, 5}, {6, 5}), 8);
    EXPECT_DOUBLE_EQ(wallLoss(floor, {3, 5}, {6, 5}), 5);
    EXPECT_DOUBLE_EQ(wallLoss(floor, {5, 5}, {6, 5}), 0);
}

}  // namespace

}  // namespace nearcast::simulator
