// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Channel.h"

#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>

namespace nearcast::simulator {

namespace {

constexpr Place user = {50, 50};

/// What a scene's first dongle is heard with, where nothing is left to chance.
double strengthOf(const Scene& scene) {
    const auto heard = heardOf(advertisements(scene, 1), 0);
    EXPECT_FALSE(heard.empty());
    return heard.empty() ? 0 : heard.front().RSSI.value();
}

TEST(Channel, LosesByTheLogarithmOfTheDistance) {
    Air air;
    air.lossAtOneMetre = 54;
    air.exponent = 2.5;
    EXPECT_DOUBLE_EQ(distanceLoss(air, 1), 54);
    EXPECT_DOUBLE_EQ(distanceLoss(air, 10), 79);
    EXPECT_DOUBLE_EQ(distanceLoss(air, 100), 104);
    EXPECT_DOUBLE_EQ(distanceLoss(air, 0.2), distanceLoss(air, 0.1999));
    EXPECT_GT(distanceLoss(air, 0.2001), distanceLoss(air, 0.2));
    EXPECT_DOUBLE_EQ(distanceLoss(air, 0), distanceLoss(air, 0.2));
}

TEST(Channel, HearsThePowerLessTheLoss) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    EXPECT_EQ(strengthOf(scene), -74);
    scene.dongles[0].txPower = 4;
    EXPECT_EQ(strengthOf(scene), -70);
    scene.dongles[0].txPower = 4.6;
    EXPECT_EQ(strengthOf(scene), -69) << "rounded to whole dBm";
    scene.dongles[0].at = {51, 50};
    EXPECT_EQ(strengthOf(scene), -49);
}

TEST(Channel, LosesWhatEveryWallBetweenTakes) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.floor.walls = {{"", {{55, 0}, {55, 100}}, 7}};
    EXPECT_EQ(strengthOf(scene), -74 - 7);
    scene.floor.walls.push_back({"", {{57, 40}, {57, 60}}, 3});
    EXPECT_EQ(strengthOf(scene), -74 - 10);
    scene.floor.walls.push_back({"", {{61, 40}, {61, 60}}, 50});
    EXPECT_EQ(strengthOf(scene), -74 - 10) << "a wall behind the dongle";
}

TEST(Channel, LosesMostThroughTheBody) {
    User holder;
    holder.bodyLoss = 8;
    const auto loss = [&](double degrees) {
        return bodyLoss(holder, {user, degrees * std::numbers::pi / 180}, {60, 50});
    };
    EXPECT_DOUBLE_EQ(loss(0), 0);
    EXPECT_NEAR(loss(90), 2, 1e-9);
    EXPECT_NEAR(loss(-90), 2, 1e-9);
    EXPECT_DOUBLE_EQ(loss(180), 8);
    EXPECT_LT(loss(30), loss(60));
    EXPECT_LT(loss(120), loss(150));
    EXPECT_DOUBLE_EQ(bodyLoss(holder, {user, 0}, user), 0) << "on the very spot there is no direction";
}

TEST(Channel, HearsADongleBehindTheUserWeaker) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.user.bodyLoss = 8;
    scene.user.path[0].facing = 0;
    EXPECT_EQ(strengthOf(scene), -74);
    scene.user.path[0].facing = 180;
    EXPECT_EQ(strengthOf(scene), -74 - 8);
}

TEST(Channel, KeepsStrengthsWithinWhatAControllerCanSay) {
    Scene scene = quietScene({dongle(1, {50, 50})});
    scene.dongles[0].txPower = 20;
    scene.air.lossAtOneMetre = 0;
    EXPECT_EQ(strengthOf(scene), 20);
    scene.air.lossAtOneMetre = 150;
    scene.dongles[0].at = {60, 50};
    EXPECT_EQ(strengthOf(scene), -127);
}

TEST(Channel, ShadowsByPlaceTheSameWayEveryTime) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.air.placeDeviation = 4;
    Random random(5, "one");
    const Channel channel(scene, scene.dongles[0], random);
    const double here = channel.mean({user, 0});
    const double elsewhere = channel.mean({{58, 50}, 0});
    EXPECT_EQ(channel.mean({user, 0}), here);
    EXPECT_NE(elsewhere, here);
    EXPECT_NEAR(channel.mean({{50.01, 50}, 0}), here, 0.5) << "a step of 1 cm changes little";
}

TEST(Channel, SpreadsShadowingOverPlacesByItsDeviation) {
    Scene scene = quietScene({dongle(1, {0, 0})});
    scene.air = {0, 0, 4, 1, 0, 1, 0, 0, 0};
    std::vector<double> values;
    for (unsigned seed = 0; seed < 200; ++seed) {
        Random random(seed, "one");
        const Channel channel(scene, scene.dongles[0], random);
        for (double x = 5; x < 100; x += 10) values.push_back(channel.mean({{x, 50}, 0}));
    }
    EXPECT_NEAR(mean(values), 0, 0.3);
    EXPECT_NEAR(standardDeviation(values), 4, 0.3);
}

/// The correlation of a drift of 5 s over as many seconds, heard as strengths of one dongle every 1.005 s.
TEST(Channel, DriftsSlowly) {
    Scene scene = quietScene({dongle(1, {60, 50}, 1)});
    scene.air.driftDeviation = 6;
    scene.air.driftTime = 5;
    const auto values = strengths(heardOf(advertisements(scene, 20'000), 0));
    EXPECT_NEAR(mean(values), -74, 1);
    EXPECT_NEAR(standardDeviation(values), 6, 0.4);
    double products = 0;
    const std::size_t lag = 5;
    for (std::size_t index = lag; index < values.size(); ++index) {
        products += (values[index] - mean(values)) * (values[index - lag] - mean(values));
    }
    EXPECT_NEAR(products / static_cast<double>(values.size() - lag) / 36, std::exp(-1.0), 0.08);
}

TEST(Channel, JittersFromOneAdvertisementToTheNext) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.air.jitterDeviation = 3;
    const auto values = strengths(heardOf(advertisements(scene, 1000), 0));
    EXPECT_NEAR(mean(values), -74, 0.2);
    EXPECT_NEAR(standardDeviation(values), 3, 0.1);
}

TEST(Channel, HearsTheThreeAdvertisingChannelsDifferently) {
    Scene scene = quietScene({dongle(1, {60, 50}, 0.02)});
    scene.air.echo = 0.5;
    scene.receiver.channelTime = 1;
    const auto heard = heardOf(advertisements(scene, 6 - 1e-6), 0);
    std::vector<std::vector<double>> bySecond(6);
    for (const Advertisement& one : heard) {
        bySecond.at(static_cast<std::size_t>(one.at / std::chrono::seconds(1))).push_back(one.RSSI.value());
    }
    for (const auto& values : bySecond) EXPECT_EQ(standardDeviation(values), 0);
    for (std::size_t second = 0; second < 3; ++second) EXPECT_EQ(bySecond[second][0], bySecond[second + 3][0]);
    EXPECT_GT(standardDeviation({bySecond[0][0], bySecond[1][0], bySecond[2][0]}), 0);
}

TEST(Channel, LosesItsShareOfAdvertisements) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.air.loss = 0.3;
    const auto all = advertisements(scene, 1000);
    const double heard = static_cast<double>(heardOf(all, 0).size());
    EXPECT_NEAR(heard / static_cast<double>(all.size()), 0.7, 0.02);
    scene.air.loss = 1;
    EXPECT_TRUE(heardOf(advertisements(scene, 1000), 0).empty());
}

TEST(Channel, LosesMoreTheWeakerTheSignal) {
    const auto share = [](double sensitivity) {
        Scene scene = quietScene({dongle(1, {60, 50})});
        scene.receiver.sensitivity = sensitivity;
        const auto all = advertisements(scene, 500);
        return static_cast<double>(heardOf(all, 0).size()) / static_cast<double>(all.size());
    };
    EXPECT_NEAR(share(-74), 0.5, 0.03);
    EXPECT_GT(share(-84), 0.99);
    EXPECT_LT(share(-64), 0.01);
    EXPECT_GT(share(-75), share(-74));
    EXPECT_GT(share(-74), share(-73));
}

TEST(Channel, HasNoReadingNowAndThen) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    scene.receiver.unreadable = 0.25;
    const auto values = strengths(heardOf(advertisements(scene, 500), 0));
    const auto count = static_cast<double>(std::count(values.begin(), values.end(), 127.0));
    EXPECT_NEAR(count / static_cast<double>(values.size()), 0.25, 0.03);
}

}  // namespace

}  // namespace nearcast::simulator
