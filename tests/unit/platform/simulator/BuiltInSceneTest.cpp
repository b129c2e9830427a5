// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorOptions.h"

#include "platform/simulator/SceneReader.h"
#include "platform/simulator/Walk.h"
#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <set>

namespace nearcast::simulator {

namespace {

Scene builtIn() { return readScene(builtInScene(), builtInSceneName); }

TEST(BuiltInScene, HasSixDevicesOfAllKinds) {
    int drawers = 0;
    int printersWithDrawer = 0;
    int printersWithout = 0;
    for (const Dongle& dongle : builtIn().dongles) {
        ASSERT_TRUE(dongle.device) << dongle.address;
        if (dongle.device->type == Device::Type::drawer) {
            ++drawers;
        } else {
            ++(dongle.device->withDrawer ? printersWithDrawer : printersWithout);
        }
    }
    EXPECT_EQ(drawers, 2);
    EXPECT_EQ(printersWithDrawer, 1);
    EXPECT_EQ(printersWithout, 3);
}

TEST(BuiltInScene, UsesEveryPayload) {
    std::set<Dongle::Payload> payloads;
    for (const Dongle& dongle : builtIn().dongles) payloads.insert(dongle.payload);
    EXPECT_EQ(payloads.size(), 3U);
}

TEST(BuiltInScene, BringsTheWaiterNearSeveralDevicesSoonAndNearAllInALoop) {
    const Scene scene = builtIn();
    const Walk walk(scene.user);
    EXPECT_GE(walk.period(), 55);
    EXPECT_LE(walk.period(), 90);
    std::set<std::size_t> soon;
    std::set<std::size_t> all;
    for (double seconds = 0; seconds < walk.period(); seconds += 0.1) {
        const auto nearest = nearestDongle(scene, walk, seconds);
        if (nearest->distance > 1.5) continue;
        all.insert(nearest->dongle);
        if (seconds <= 15) soon.insert(nearest->dongle);
    }
    EXPECT_EQ(soon.size(), 3U);
    EXPECT_EQ(all.size(), 6U);
}

/// The manager looks for silent dongles 5, 10, 15 ... s after the start of a scan, and calls one silent that it has not
/// heard for 5 s.
TEST(BuiltInScene, LetsOneDongleFallSilentTenSecondsAfterTheStart) {
    Scene scene = builtIn();
    for (scene.seed = 1; scene.seed <= 20; ++scene.seed) {
        const auto all = advertisements(scene, 10);
        for (std::size_t index = 0; index < scene.dongles.size(); ++index) {
            const auto heard = heardOf(all, index);
            ASSERT_GE(heard.size(), 5U) << scene.dongles[index].address;
            const bool silent = heard.back().at <= std::chrono::seconds(5);
            EXPECT_EQ(silent, scene.dongles[index].device->portName == "BT:Terrace") << scene.dongles[index].address;
        }
    }
}

TEST(BuiltInScene, HearsTheNearestDongleLoudestWhereTheWaiterStops) {
    const Scene scene = builtIn();
    for (const Waypoint& place : scene.user.path) {
        if (place.pause <= 0) continue;
        Scene standing = scene;
        standing.user.path = {place};
        for (Dongle& dongle : standing.dongles) dongle.off.clear();
        const auto all = advertisements(standing, 40);
        std::vector<double> means;
        for (std::size_t index = 0; index < 6; ++index) means.push_back(mean(strengths(heardOf(all, index))));
        const auto loudest = static_cast<std::size_t>(std::max_element(means.begin(), means.end()) - means.begin());
        EXPECT_EQ(loudest, nearestDongle(standing, Walk(standing.user), 0)->dongle) << place.at.x << ", " << place.at.y;
    }
}

TEST(BuiltInScene, IsRegisteredWhole) { EXPECT_EQ(simulatorSettings(builtIn()).size(), 6U); }

}  // namespace

}  // namespace nearcast::simulator
