// SPDX-License-Identifier: Apache-2.0
#include "lab/Rule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::lab {
namespace {

using Kind = PlaybackEvent::Kind;
using Lines = std::vector<std::string>;

/// Writes down what it is told; answers with the dongle heard last.
struct Diary : lab::Rule {
    Lines lines;
    std::string last;

    void heard(double at, std::string_view MACAddr, std::int32_t RSSI) override {
        last = MACAddr;
        add("heard", at, MACAddr, RSSI);
    }
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI) override { add("report", at, MACAddr, RSSI); }
    void silent(double at, std::string_view MACAddr) override { add("silent", at, MACAddr, 0); }
    void radio(double at, bool hears) override { add("radio", at, "", hears ? 1 : 0); }
    std::string_view nearest(double at) override {
        add("asked", at, "", 0);
        return last;
    }
    void add(const std::string& what, double at, std::string_view MACAddr, int value) {
        const auto milliseconds = static_cast<int>(at * 1000);
        lines.push_back(what + " " + std::to_string(milliseconds) + " " + std::string(MACAddr) + std::to_string(value));
    }
};

Playback playbackOf(std::vector<PlaybackEvent> events, double end) {
    Playback playback;
    playback.dongles = {{"A", "BT:Bar", "", {}}, {"B", "", "", {}}};
    playback.events = std::move(events);
    playback.end = end;
    return playback;
}

TEST(Deciding, ARuleIsToldWhatHappenedUpToEachSampleThatMomentIncluded) {
    Diary diary;
    const auto answers = answersOf(playbackOf({{0, Kind::scanStarted},
                                               {0.4, Kind::heard, 0, -60},
                                               {0.4, Kind::reported, 0, -61},
                                               {0.5, Kind::silent, 0, 0},
                                               {0.501, Kind::heard, 0, -70}},
                                              1),
                                   diary);
    EXPECT_EQ(diary.lines, (Lines{"asked 0 0", "heard 400 A-60", "report 400 A-61", "silent 500 A0", "asked 500 0",
                                  "heard 501 A-70", "asked 1000 0"}));
    EXPECT_EQ(answers, (lab::Answers{{"", 1}, {"A", 2}}));
}

TEST(Deciding, DonglesThatAreNotRegisteredArePassedOver) {
    Diary diary;
    EXPECT_EQ(answersOf(playbackOf({{0, Kind::heard, 1, -60}}, 0), diary), (lab::Answers{{"", 1}}));
}

TEST(Deciding, TheRadioHearsOnlyWhileItIsPoweredOn) {
    Diary diary;
    const std::uint32_t none = PlaybackEvent::noDongle;
    answersOf(playbackOf({{0, Kind::radio, none, 4}, {0, Kind::radio, none, 5}, {0, Kind::radio, none, 6}}, 0), diary);
    EXPECT_EQ(diary.lines, (Lines{"radio 0 0", "radio 0 1", "radio 0 0", "asked 0 0"}));
}

TEST(Deciding, TheLastSampleIsNotAfterTheEnd) {
    Diary diary;
    EXPECT_EQ(answersOf(playbackOf({}, 0.999), diary), (lab::Answers{{"", 2}}));
    EXPECT_EQ(answersOf(playbackOf({}, 1), diary), (lab::Answers{{"", 3}}));
    EXPECT_EQ(answersOf(playbackOf({}, 0), diary), (lab::Answers{{"", 1}}));
}

}  // namespace
}  // namespace nearcast::lab
