// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/ReplayPlatform.h"

#include "platform/json/JSONSerialization.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace nearcast::replay {

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

ReplayOptions parse(std::string_view text) { return ReplayOptions::parse(RadioString::parse(text)); }

TEST(ReplayOptions, AreReadFromARadioString) {
    const ReplayOptions plain = parse("replay:some/file.jsonl");
    EXPECT_EQ(plain.path, "some/file.jsonl");
    EXPECT_EQ(plain.speed, 1.0);
    EXPECT_FALSE(plain.recording.anyService);
    const ReplayOptions full = parse("replay:what?.pcap?speed=max&services=any&as=dongles");
    EXPECT_EQ(full.path, "what?.pcap");
    EXPECT_EQ(full.speed, std::nullopt);
    EXPECT_TRUE(full.recording.anyService);
    EXPECT_TRUE(full.recording.asDongles);
}

TEST(ReplayOptions, RefuseValuesThatAreNotUnderstood) {
    for (const char* text : {"replay:f?speed=0", "replay:f?as=", "replay:f?services=none"}) {
        EXPECT_THROW(parse(text), std::invalid_argument) << text;
    }
}

/// A recording in a file of its own.
class ReplayPlatformTest : public ::testing::Test {
protected:
    ReplayPlatformTest() {
        std::ofstream(path) << R"({"at": 0.001, "do": "advertise", "RSSI": -1})"
                            << "\n"
                            << R"({"at": 0.002, "do": "advertise", "RSSI": -2})"
                            << "\n{torn";
    }
    ~ReplayPlatformTest() override { std::remove(path.c_str()); }

    std::string path = ::testing::TempDir() + "ReplayPlatformTest_" +
                       ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".jsonl";
    KeptLines console;
    JSONSerialization JSON;
};

TEST_F(ReplayPlatformTest, PlaysARecordingToWhoeverOpensTheRadio) {
    ReplayPlatform platform(console, JSON, nullptr, parse("replay:" + path + "?speed=max"));
    Listener listener(platform.timeline());
    const auto radio = platform.centralManager(listener);
    EXPECT_EQ(radio->state(), CBManagerStatePoweredOn);
    radio->scanForPeripheralsWithServices(std::vector{dongleUUID()}, {.allowDuplicates = true});
    EXPECT_EQ(platform.timeline().runUntil(seconds(1)), Timeline::End::exhausted);
    EXPECT_EQ(signalsOf(listener.deliveries), (std::vector{-1, -2}));
    EXPECT_EQ(platform.date().sinceStart(), microseconds(2'000));
}

TEST_F(ReplayPlatformTest, TellsDamageOnTheConsoleAndAsItsFailure) {
    ReplayPlatform platform(console, JSON, nullptr, parse("replay:" + path + "?speed=max"));
    Listener listener(platform.timeline());
    auto radio = platform.centralManager(listener);
    radio->scanForPeripheralsWithServices(std::nullopt, {});
    EXPECT_EQ(platform.failure(), "");
    platform.timeline().runUntil(seconds(1));
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_EQ(console.lines().at(0).rfind(path + ": damaged at byte 90: not JSON at line 3, column ", 0), 0U)
        << console.lines().at(0);
    radio.reset();
    EXPECT_EQ(platform.failure(), console.lines().at(0));
}

TEST_F(ReplayPlatformTest, OpensTheRecordingBeforeTheRadio) {
    EXPECT_THROW(ReplayPlatform(console, JSON, nullptr, parse("replay:/nowhere/to/be.found")), std::system_error);
    std::ofstream(path) << "no recording";
    EXPECT_THROW(ReplayPlatform(console, JSON, nullptr, parse("replay:" + path)), NoRecording);
}

TEST_F(ReplayPlatformTest, PlaysItAgainToARadioThatIsOpenedAgain) {
    ReplayPlatform platform(console, JSON, nullptr, parse("replay:" + path + "?speed=max"));
    for (int round = 0; round < 2; ++round) {
        Listener listener(platform.timeline());
        const auto radio = platform.centralManager(listener);
        radio->scanForPeripheralsWithServices(std::nullopt, {});
        platform.timeline().runUntil(platform.timeline().now() + seconds(1));
        EXPECT_EQ(signalsOf(listener.deliveries), (std::vector{-1, -2})) << round;
    }
}

}  // namespace

}  // namespace nearcast::replay
