// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneReader.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace nearcast::simulator {

namespace {

constexpr std::string_view smallest = R"({"floor": {"width": 10, "depth": 5}, "user": {"path": [{"at": [1, 2]}]},
                                          "dongles": []})";

Scene read(std::string_view text) { return readScene(text, "shop.json"); }

/// A dongle's members, read as the only dongle of a small scene.
Dongle readDongle(const std::string& members) {
    return read(R"({"floor": {"width": 10, "depth": 5}, "user": {"path": [{"at": [1, 2]}]}, "dongles": [{)" + members +
                "}]}")
        .dongles.at(0);
}

TEST(SceneReader, GivesDefaultsForAllThatMayBeLeftOut) {
    const Scene scene = read(smallest);
    const Scene defaults;
    EXPECT_EQ(scene.name, "");
    EXPECT_EQ(scene.seed, 1U);
    EXPECT_FALSE(scene.duration);
    EXPECT_TRUE(scene.floor.walls.empty());
    EXPECT_EQ(scene.user.speed, 1.2);
    EXPECT_TRUE(scene.user.loop);
    EXPECT_EQ(scene.user.bodyLoss, 6);
    EXPECT_EQ(scene.air, defaults.air);
    EXPECT_EQ(scene.receiver.sensitivity, -100);
    EXPECT_EQ(scene.receiver.channelTime, 0.1);
    EXPECT_EQ(scene.receiver.unreadable, 0);
    EXPECT_TRUE(scene.radio.empty());
}

TEST(SceneReader, ReadsTheFloor) {
    const Scene scene = read(R"({"floor": {"width": 10, "depth": 5.5, "walls": [
        {"name": "bar", "points": [[0, 0], [10, 5.5], [3, 4]], "loss": 2.5}, {"points": [[1, 1], [2, 2]], "loss": 0}]},
        "user": {"path": [{"at": [1, 2]}]}, "dongles": []})");
    EXPECT_EQ(scene.floor.width, 10);
    EXPECT_EQ(scene.floor.depth, 5.5);
    ASSERT_EQ(scene.floor.walls.size(), 2U);
    EXPECT_EQ(scene.floor.walls[0].name, "bar");
    EXPECT_EQ(scene.floor.walls[0].points, (std::vector<Place>{{0, 0}, {10, 5.5}, {3, 4}}));
    EXPECT_EQ(scene.floor.walls[0].loss, 2.5);
}

TEST(SceneReader, ReadsTheUser) {
    const Scene scene = read(R"({"floor": {"width": 10, "depth": 5}, "dongles": [], "user": {"speed": 0.8,
        "loop": false, "bodyLoss": 3, "path": [{"at": [1, 2], "pause": 4, "facing": -90}, {"at": [3, 4]}]}})");
    EXPECT_EQ(scene.user.speed, 0.8);
    EXPECT_FALSE(scene.user.loop);
    EXPECT_EQ(scene.user.bodyLoss, 3);
    ASSERT_EQ(scene.user.path.size(), 2U);
    EXPECT_EQ(scene.user.path[0].at, (Place{1, 2}));
    EXPECT_EQ(scene.user.path[0].pause, 4);
    EXPECT_EQ(scene.user.path[0].facing, -90);
    EXPECT_EQ(scene.user.path[1].pause, 0);
    EXPECT_FALSE(scene.user.path[1].facing);
}

TEST(SceneReader, ReadsTheAirTheReceiverAndTheRest) {
    const Scene scene = read(R"({"name": "Bar", "seed": 18446744073709551615, "duration": 60,
        "floor": {"width": 10, "depth": 5}, "user": {"path": [{"at": [1, 2]}]}, "dongles": [],
        "air": {"lossAtOneMetre": 50, "exponent": 3, "placeDeviation": 1, "placeDistance": 2, "driftDeviation": 3,
                "driftTime": 4, "echo": 0.5, "jitterDeviation": 6, "loss": 0.7},
        "receiver": {"sensitivity": -90, "channelTime": 0.01, "unreadable": 0.1}})");
    EXPECT_EQ(scene.name, "Bar");
    EXPECT_EQ(scene.seed, 18446744073709551615U);
    EXPECT_EQ(scene.duration, 60);
    EXPECT_EQ(scene.air, (Air{50, 3, 1, 2, 3, 4, 0.5, 6, 0.7}));
    EXPECT_EQ(scene.receiver.sensitivity, -90);
    EXPECT_EQ(scene.receiver.channelTime, 0.01);
    EXPECT_EQ(scene.receiver.unreadable, 0.1);
}

TEST(SceneReader, ReadsTheRadiosChanges) {
    const Scene scene = read(R"({"floor": {"width": 10, "depth": 5}, "user": {"path": [{"at": [1, 2]}]}, "dongles": [],
        "radio": [{"at": 0, "state": "unknown"}, {"at": 1, "state": "resetting"}, {"at": 2, "state": "unsupported"},
        {"at": 3, "state": "unauthorized"}, {"at": 4, "state": "poweredOff"}, {"at": 5.5, "state": "poweredOn"}]})");
    ASSERT_EQ(scene.radio.size(), 6U);
    for (int state = 0; state <= 5; ++state) EXPECT_EQ(scene.radio[static_cast<std::size_t>(state)].state, state);
    EXPECT_EQ(scene.radio[5].at, 5.5);
}

TEST(SceneReader, ReadsADongle) {
    const Dongle dongle = readDongle(R"("address": "0a:1B:2c:3D:4e:5F", "at": [2, 3], "txPower": -12.5,
        "interval": 0.02, "payload": "both", "off": [[1, 2], [3, 4]], "offEvery": 4)");
    EXPECT_EQ(dongle.address, "0A:1B:2C:3D:4E:5F") << "as the manager writes what it hears";
    EXPECT_EQ(dongle.at, (Place{2, 3}));
    EXPECT_EQ(dongle.txPower, -12.5);
    EXPECT_EQ(dongle.interval, 0.02);
    EXPECT_EQ(dongle.payload, Dongle::Payload::both);
    ASSERT_EQ(dongle.off.size(), 2U);
    EXPECT_EQ(dongle.off[1].from, 3);
    EXPECT_EQ(dongle.off[1].to, 4);
    EXPECT_EQ(dongle.offEvery, 4);
    EXPECT_FALSE(dongle.device);
}

TEST(SceneReader, GivesADongleDefaults) {
    const Dongle dongle = readDongle(R"("address": "00:00:00:00:00:01", "at": [2, 3])");
    EXPECT_EQ(dongle.txPower, 0);
    EXPECT_EQ(dongle.interval, 0.1);
    EXPECT_EQ(dongle.payload, Dongle::Payload::data);
    EXPECT_TRUE(dongle.off.empty());
    EXPECT_FALSE(dongle.offEvery);
}

TEST(SceneReader, ReadsADevice) {
    const auto device = readDongle(R"("address": "00:00:00:00:00:01", "at": [2, 3], "device": {"portName": "BT:A",
        "type": "printer", "withDrawer": true, "portSettings": "p", "threshold": -65, "nickName": "Küche"})")
                            .device;
    ASSERT_TRUE(device);
    EXPECT_EQ(device->portName, "BT:A");
    EXPECT_EQ(device->type, Device::Type::printer);
    EXPECT_TRUE(device->withDrawer);
    EXPECT_EQ(device->portSettings, "p");
    EXPECT_EQ(device->threshold, -65);
    EXPECT_EQ(device->nickName, "Küche");
}

TEST(SceneReader, TakesNullForAbsent) {
    const Scene scene = read(R"({"floor": {"width": 10, "depth": 5, "walls": null}, "air": null, "duration": null,
        "user": {"path": [{"at": [1, 2], "facing": null}]}, "dongles": [], "radio": null})");
    EXPECT_FALSE(scene.duration);
    EXPECT_FALSE(scene.user.path[0].facing);
}

TEST(SceneReader, ReadsAFile) {
    const std::string path = testing::TempDir() + "nearcast-scene-" + std::to_string(getpid()) + ".json";
    std::ofstream(path) << smallest;
    EXPECT_EQ(readSceneFile(path).floor.width, 10);
    std::remove(path.c_str());
}

}  // namespace

}  // namespace nearcast::simulator
