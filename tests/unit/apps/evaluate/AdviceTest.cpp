// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Advice.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <vector>

namespace nearcast::cli {
namespace {

using Kind = lab::PlaybackEvent::Kind;

SettingRecordPointer recordOf(const char* address) {
    return std::make_shared<const SettingRecord>(SettingRecord{{"MAC Address", address}, {"Nick Name", "x"}});
}

/// Twenty seconds at A, then twenty at B; the one that the user stands at is heard at -50, the other at -70.
JudgedRecording walk() {
    JudgedRecording recording;
    recording.truth = {{0, "A"}, {20, "B"}};
    recording.playback.end = 40;
    recording.playback.dongles = {{"A", "BT:A", "", -80}, {"B", "BT:B", "", {}}};
    for (double at = 0; at <= 40; at += 0.5) {
        recording.playback.events.push_back({at, Kind::heard, 0, at < 20 ? -50 : -70});
        recording.playback.events.push_back({at, Kind::heard, 1, at < 20 ? -70 : -50});
    }
    recording.playback.registry =
        std::make_shared<const Settings>(Settings{{"BT:A", recordOf("A")}, {"BT:B", recordOf("B")}});
    return recording;
}

NearestSettings quick() {
    NearestSettings settings;
    settings.attack = 1;
    settings.decay = 0.1;
    return settings;
}

TEST(Advice, ThresholdsSeparateByTheLevelsThatNearestCompares) {
    const auto advice = advise({walk()}, quick());
    ASSERT_EQ(advice.size(), 2U);
    EXPECT_EQ(advice[0].portName, "BT:A");
    EXPECT_EQ(advice[0].present, -80);
    EXPECT_EQ(advice[0].advice.threshold, -60);
    EXPECT_EQ(advice[0].advice.error(), 0);
    EXPECT_EQ(advice[1].present, std::nullopt);
    EXPECT_EQ(advice[1].advice.threshold, -60);
}

TEST(Advice, ALevelThatFallsSlowlyMovesTheThreshold) {
    NearestSettings slow = quick();
    slow.decay = 60;
    EXPECT_GT(advise({walk()}, slow)[0].advice.threshold, -60);
}

TEST(Advice, StaysOfSeveralRecordingsCountTogether) {
    const auto advice = advise({walk(), walk()}, quick());
    EXPECT_EQ(advice[0].advice.stays, 2U);
    EXPECT_FALSE(advice[0].advice.byHalves);
}

TEST(Advice, ADeviceThatTheUserDidNotStandAtHasNoThreshold) {
    JudgedRecording recording = walk();
    recording.truth = {{0, "A"}};
    const auto advice = advise({recording}, quick());
    EXPECT_EQ(advice[1].advice.threshold, std::nullopt);
    const std::string text = textOf(advice);
    EXPECT_NE(text.find("BT:A: no threshold: the user stood nowhere else for long enough\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("BT:B: no threshold: the user did not stand at it for long enough\n"), std::string::npos);
}

TEST(Advice, ThresholdsArePutIntoTheRecordsAndNothingElseChanges) {
    const Settings registry{{"BT:A", recordOf("A")}, {"BT:C", recordOf("C")}};
    const Settings changed = withThresholds(registry, advise({walk()}, quick()));
    EXPECT_EQ(changed.size(), 2U);
    EXPECT_EQ(changed.at("BT:A")->at("Threshold RSSI"), SettingValue(-60));
    EXPECT_EQ(changed.at("BT:A")->at("Nick Name"), SettingValue("x"));
    EXPECT_EQ(changed.at("BT:C"), registry.at("BT:C"));
}

/// The same with an event each half hour that no rule hears of, so that no time is a leap.
JudgedRecording sampledWhole(JudgedRecording recording) {
    auto& events = recording.playback.events;
    const auto end = recording.playback.end;
    for (double at = 0; at <= end; at += 1800) events.push_back({at, Kind::scanRestarted});
    std::stable_sort(events.begin(), events.end(),
                     [](const auto& left, const auto& right) { return left.at < right.at; });
    return recording;
}

/// A walk after which the radio is off, so that levels stay, for hours; then another one.
JudgedRecording walksWithALeap(bool radioOff, const lines::Truth& truth) {
    JudgedRecording recording = walk();
    constexpr double later = 40'000.25;
    auto& events = recording.playback.events;
    const auto first = events;
    if (radioOff) events.push_back({40, Kind::radio, lab::PlaybackEvent::noDongle, 4});
    if (radioOff) events.push_back({later, Kind::radio, lab::PlaybackEvent::noDongle, 5});
    for (auto event : first) {
        event.at += later;
        events.push_back(event);
    }
    recording.playback.end = later + 40;
    recording.truth.insert(recording.truth.end(), truth.begin(), truth.end());
    return recording;
}

TEST(Advice, OfALeapIsThatOfEverySampleOfIt) {
    const std::vector<lines::Truth> truths{
        {},
        {{20'000.3, "A"}},                                    // a stay that begins within it
        {{15'000, "A"}, {15'009.9, "B"}, {25'000.5, ""}},     // one that is too short, and ones that end within it
        {{12'000, "A"}, {12'011.5, "B"}, {12'030, "A"}},      // short ones
        {{30'000, ""}, {40'000.25, "A"}, {40'020.25, "B"}}};  // and with the walk after it
    for (const bool radioOff : {false, true}) {
        for (const lines::Truth& truth : truths) {
            const JudgedRecording recording = walksWithALeap(radioOff, truth);
            const auto advice = advise({recording}, quick());
            const auto plain = advise({sampledWhole(recording)}, quick());
            EXPECT_EQ(textOf(advice), textOf(plain));
            EXPECT_EQ(JSONOf(advice, quick()), JSONOf(plain, quick()));
        }
    }
}

DeviceAdvice mistaken() {
    DeviceAdvice one{"BT:A", {}, {}, "BT:B"};
    one.advice.MACAddr = "A";
    one.advice.threshold = -60;
    one.advice.stays = 1;
    one.advice.byHalves = true;
    one.advice.missed = 0.25;
    one.advice.intruding = 0.05;
    one.advice.mistakenAt = "B";
    one.advice.intrudingThere = 0.37;
    return one;
}

TEST(Advice, AnOverlapIsSaid) {
    const std::string text = textOf({mistaken()});
    EXPECT_NE(text.find("\nBT:A: cannot be told apart from BT:B: 31.0 % error\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  BT:A              -            -60             25.0                 5.0     15.0      1\n"),
              std::string::npos)
        << text;
}

TEST(Advice, AsJSONSaysTheSame) {
    const auto json = nlohmann::json::parse(JSONOf({mistaken()}, {}));
    const auto& device = json["devices"][0];
    EXPECT_EQ(device["threshold"], -60);
    EXPECT_EQ(device["present"], nullptr);
    EXPECT_EQ(device["validatedBy"], "halves");
    EXPECT_EQ(device["errorPercent"], 15);
    EXPECT_EQ(device["mistakenAt"], "BT:B");
    EXPECT_EQ(device["errorTherePercent"], 31);
    EXPECT_EQ(device["inseparable"], true);
}

}  // namespace
}  // namespace nearcast::cli
