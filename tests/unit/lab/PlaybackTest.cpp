// SPDX-License-Identifier: Apache-2.0
#include "lab/Playback.h"
#include "lines/LineReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace nearcast::lab {
namespace {

using Kind = PlaybackEvent::Kind;

const std::string first = "00:11:22:AA:BB:CC";
const std::string second = "00:11:22:AA:BB:DD";

std::vector<lines::Line> linesOf(const std::vector<std::string>& texts) {
    std::vector<lines::Line> lines;
    lines::Time at{0};
    for (const std::string& text : texts) {
        lines.push_back(lines::parseLine(text, at));
        at = lines.back().at;
    }
    return lines;
}

std::string heardAt(double at, std::string address, int RSSI) {
    std::erase(address, ':');
    return R"({"at":)" + std::to_string(at) + R"(,"do":"advertise","manufacturerData":"FFFF)" + address +
           R"(","RSSI":)" + std::to_string(RSSI) + "}";
}

/// A dongle once a second from second 1 on.
std::vector<std::string> seconds(int count, const std::string& address, int RSSI) {
    std::vector<std::string> texts;
    for (int at = 1; at <= count; ++at) texts.push_back(heardAt(at, address, RSSI));
    return texts;
}

Playback playLines(const std::vector<std::string>& texts, std::shared_ptr<const Settings> registry = nullptr) {
    return play({"a recording", linesOf(texts), std::move(registry)});
}

std::vector<PlaybackEvent> eventsOf(const Playback& playback, Kind kind) {
    std::vector<PlaybackEvent> events;
    std::copy_if(playback.events.begin(), playback.events.end(), std::back_inserter(events),
                 [&](const PlaybackEvent& event) { return event.kind == kind; });
    return events;
}

using Events = std::vector<PlaybackEvent>;
constexpr std::uint32_t none = PlaybackEvent::noDongle;

TEST(Playback, EveryDongleOfARecordingIsRegisteredUnderItsAddress) {
    const Playback playback = playLines({heardAt(1, second, -60), heardAt(2, first, -70)});
    ASSERT_EQ(playback.dongles.size(), 2U);
    EXPECT_EQ(playback.dongles[0].MACAddr, first);
    EXPECT_EQ(playback.dongles[0].portName, first);
    EXPECT_EQ(playback.dongles[0].threshold, std::nullopt);
    EXPECT_EQ(playback.dongles[1].MACAddr, second);
    EXPECT_EQ(playback.registry->size(), 2U);
}

TEST(Playback, TheRecordsAreThoseThatTheManagerMakesOfPrinters) {
    const Settings played = *playLines({heardAt(1, first, -60)}).registry;
    auto& manager = QXNearcastManager::sharedManager();  // the one that was played to
    manager.addSettingForPrinterPortName(first, {}, false, first, {}, {});
    EXPECT_EQ(*played.at(first), *manager.getSettings()->at(first));
}

TEST(Playback, RawReadingsAreSeenBesideTheReportsThatComeOfThem) {
    const Playback playback = playLines(seconds(8, first, -60));
    EXPECT_EQ(eventsOf(playback, Kind::heard).size(), 8U);
    EXPECT_EQ(eventsOf(playback, Kind::reported), (Events{{7, Kind::reported, 0, -60}, {8, Kind::reported, 0, -60}}));
    const auto reported =
        std::find(playback.events.begin(), playback.events.end(), PlaybackEvent{7, Kind::reported, 0, -60});
    EXPECT_EQ(*std::prev(reported), (PlaybackEvent{7, Kind::heard, 0, -60}));
}

TEST(Playback, AReadingThatTheControllerDoesNotHaveIsNotHeard) {
    const Playback playback = playLines({heardAt(1, first, 127), heardAt(2, first, 126)});
    EXPECT_EQ(eventsOf(playback, Kind::heard), (Events{{2, Kind::heard, 0, 126}}));
}

TEST(Playback, TheSilencesAfterTheLastLineAreInItButNotItsLength) {
    const Playback playback = playLines({heardAt(1, first, -60), R"({"at":3,"do":"end"})"});
    EXPECT_EQ(playback.end, 3);
    EXPECT_EQ(eventsOf(playback, Kind::silent), (Events{{10, Kind::silent, 0, 0}}));
}

TEST(Playback, ChangesOfTheRadioAndRestartsOfTheScanAreInIt) {
    const Playback playback = playLines({R"({"at":60,"do":"radio","state":4})", R"({"at":121,"do":"end"})"});
    EXPECT_EQ(
        playback.events,
        (Events{{0, Kind::scanStarted, none, 0}, {60, Kind::radio, none, 4}, {120, Kind::scanRestarted, none, 0}}));
}

TEST(Playback, OneRecordingAfterAnotherIsAsIfItWereAlone) {
    const auto texts = seconds(9, first, -60);
    const Playback alone = playLines(texts);
    playLines(seconds(33, second, -50));
    const Playback again = playLines(texts);
    EXPECT_EQ(again.events, alone.events);
    EXPECT_EQ(again.dongles.size(), 1U);
    EXPECT_EQ(again.end, alone.end);
}

TEST(Playback, GivenSettingsNameTheDevicesAndOthersAreNotRegistered) {
    const SettingRecord record{{"MAC Address", second}, {"Nick Name", "Bar"}, {"Threshold RSSI", -65}};
    const auto registry =
        std::make_shared<const Settings>(Settings{{"BT:Bar", std::make_shared<const SettingRecord>(record)}});
    const Playback playback = playLines({heardAt(1, first, -60), heardAt(2, second, -70)}, registry);
    ASSERT_EQ(playback.dongles.size(), 2U);
    EXPECT_EQ(playback.dongles[0].portName, "BT:Bar");
    EXPECT_EQ(playback.dongles[0].nickName, "Bar");
    EXPECT_EQ(playback.dongles[0].threshold, -65);
    EXPECT_EQ(playback.dongles[1].MACAddr, first);
    EXPECT_EQ(playback.dongles[1].portName, "");
    EXPECT_EQ(eventsOf(playback, Kind::heard), (Events{{1, Kind::heard, 1, -60}, {2, Kind::heard, 0, -70}}));
}

TEST(Playback, ADeviceWhoseRecordNamesNoDongleIsNotASenderWithoutAName) {
    const auto record = std::make_shared<const SettingRecord>(SettingRecord{{"Nick Name", "no dongle yet"}});
    const auto registry = std::make_shared<const Settings>(Settings{{"BT:Odd", record}});
    const Playback playback =
        playLines({R"({"at":1,"do":"advertise","name":"","manufacturerData":"4C0002","RSSI":-40})"}, registry);
    ASSERT_EQ(playback.dongles.size(), 2U);
    EXPECT_EQ(playback.dongles[0].portName, "BT:Odd");
    EXPECT_EQ(playback.dongles[1].portName, "");
    EXPECT_EQ(eventsOf(playback, Kind::heard), (Events{{1, Kind::heard, 1, -40}}));
}

const std::string both =
    R"({"do":"setDelegate","implements":["didDiscoverPort:deviceType:MACAddr:RSSI:","didUpdateState:MACAddr:"]})";

TEST(Playback, AScenarioRunsAsItIs) {
    const Playback playback = playLines(
        {heardAt(1, first, -10), both, R"({"at":2,"do":"startScan","samplingNumber":2})", heardAt(3, first, -20),
         heardAt(4, first, -30), R"({"at":5,"do":"stopScan"})", heardAt(6, first, -40)});
    EXPECT_EQ(playback.events, (Events{{2, Kind::scanStarted, none, 0},
                                       {3, Kind::heard, 0, -20},
                                       {4, Kind::heard, 0, -30},
                                       {4, Kind::reported, 0, -20},
                                       {5, Kind::scanStopped, none, 0}}));
    EXPECT_EQ(playback.dongles[0].portName, "");
    EXPECT_EQ(playback.end, 6);
}

TEST(Playback, ADelegateOfAScenarioHearsOnlyWhatItImplements) {
    const Playback playback = playLines({R"({"do":"setDelegate","implements":["didUpdateState:MACAddr:"]})",
                                         R"({"do":"startScan","samplingNumber":1})", heardAt(1, first, -20),
                                         heardAt(2, first, -30), R"({"at":11,"do":"end"})"});
    EXPECT_TRUE(eventsOf(playback, Kind::reported).empty());
    EXPECT_EQ(eventsOf(playback, Kind::silent), (Events{{10, Kind::silent, 0, 0}}));
}

TEST(Playback, ADeviceThatAScenarioRemovesStaysKnown) {
    const Playback playback =
        playLines({R"({"do":"addSettingForPrinterPortName","portName":"BT:Bar","dongleMACAddr":"00:11:22:AA:BB:CC"})",
                   R"({"do":"removeSettingWithPortName","portName":"BT:Bar"})"});
    ASSERT_EQ(playback.dongles.size(), 1U);
    EXPECT_EQ(playback.dongles[0].portName, "BT:Bar");
    EXPECT_EQ(playback.registry->count("BT:Bar"), 1U);
}

TEST(Playback, AScenarioLeavesNothingBehind) {
    const auto texts = seconds(9, first, -60);
    const Playback alone = playLines(texts);
    playLines({both, R"({"do":"startScan","samplingNumber":2})", R"({"at":1,"do":"radio","state":4})",
               heardAt(1, first, -20), heardAt(1, second, -20), R"({"do":"setDelegate"})"});
    EXPECT_EQ(playLines(texts).events, alone.events);
}

std::string endAt(double seconds) { return R"({"do":"end","at":)" + std::to_string(seconds) + "}"; }

constexpr double hour = 3600;
constexpr double week = 7 * 24 * hour;

/// Lines that are an hour apart, until a time.
std::vector<std::string> hoursUntil(double end) {
    std::vector<std::string> texts;
    for (double at = hour; at < end; at += hour) texts.push_back(heardAt(at, first, -60));
    texts.push_back(endAt(end));
    return texts;
}

TEST(Playback, IsPlayedSecondBySecondForSevenDaysAtMost) {
    EXPECT_EQ(playLines(hoursUntil(week)).end, week);
    EXPECT_THROW(playLines(hoursUntil(week + 0.001)), lines::InputError);
}

TEST(Playback, OfASilenceOfMoreThanAnHourAnHourCounts) {
    auto texts = hoursUntil(week - hour);
    texts.push_back(endAt(1e9));
    EXPECT_EQ(playLines(texts).end, 1e9);
    texts.push_back(endAt(1e9 + 0.001));
    EXPECT_THROW(playLines(texts), lines::InputError);
}

TEST(Playback, LinesWhoseTimeHasPassedAddNothingToItsLength) {
    auto texts = hoursUntil(week);
    texts.insert(texts.begin() + 1, {heardAt(2 * hour, first, -60), heardAt(1, first, -60)});
    EXPECT_EQ(playLines(texts).end, week);
}

TEST(Playback, ALeapHoldsNothingAndEachSilenceKeepsItsSecond) {
    const Playback playback = playLines({heardAt(3.5, first, -60), heardAt(1e9, first, -61), endAt(1e9 + 100)});
    EXPECT_EQ(eventsOf(playback, Kind::silent), (Events{{10, Kind::silent, 0, 0}, {1e9 + 5, Kind::silent, 0, 0}}));
    EXPECT_EQ(eventsOf(playback, Kind::scanRestarted), (Events{{1e9 + 80, Kind::scanRestarted, none, 0}}));
}

TEST(Playback, AScenarioInWhichNobodyAsksForSilenceLeapsToo) {
    const Playback playback =
        playLines({R"({"do":"setDelegate","implements":["didDiscoverPort:deviceType:MACAddr:RSSI:"]})",
                   R"({"do":"startScan"})", heardAt(1, first, -60), endAt(1e9)});
    EXPECT_EQ(playback.end, 1e9);
    EXPECT_EQ(eventsOf(playback, Kind::scanRestarted), Events{});
}

TEST(Playback, RecordingsThatEndBeyondTheClockAreRefusedAndTheNextOneIsPlayed) {
    EXPECT_EQ(playLines({endAt(9e9)}).end, 9e9);
    EXPECT_THROW(playLines({endAt(9e9)}), lines::InputError);
    EXPECT_EQ(playLines({endAt(1)}).end, 1);
}

std::vector<std::string> differentDongles(std::size_t count) {
    std::vector<std::string> texts;
    std::array<char, 20> address{};
    for (std::size_t number = 0; number < count; ++number) {
        std::snprintf(address.data(), address.size(), "000000%06X", static_cast<unsigned>(number));
        texts.push_back(heardAt(1, address.data(), -60));
    }
    return texts;
}

TEST(Playback, MoreDonglesThanCanBeRegisteredNeedSettings) {
    EXPECT_THROW(playLines(differentDongles(mostDongles + 1)), lines::InputError);
    const Playback playback =
        playLines(differentDongles(mostDongles + 1), std::make_shared<const Settings>(Settings()));
    EXPECT_EQ(playback.dongles.size(), mostDongles + 1);
}

/// Calls that all sleep: each in the sleep of the one before it, for the radio's state is not known.
std::vector<std::string> sleepers(int count) {
    std::vector<std::string> texts{R"({"do":"radio","state":0})"};
    for (int call = 0; call < count; ++call) texts.emplace_back(R"({"do":"startScan"})");
    return texts;
}

TEST(Playback, CallsSleepFiveHundredDeepAtMost) {
    EXPECT_NO_THROW(playLines(sleepers(500)));
    try {
        playLines(sleepers(501));
        FAIL() << "nothing was thrown";
    } catch (const lines::InputError& error) {
        EXPECT_STREQ(error.what(), "a recording: 500 calls sleep inside one another already");
    }
}

TEST(Playback, AScenarioThatBreaksOffLeavesNothingBehind) {
    const auto texts = seconds(9, first, -60);
    const Playback alone = playLines(texts);
    EXPECT_THROW(playLines(sleepers(501)), lines::InputError);
    EXPECT_EQ(playLines(texts).events, alone.events);
}

TEST(Playback, NothingToPlayIsAnEmptyRecording) {
    const Playback playback = playLines({});
    EXPECT_EQ(playback.end, 0);
    EXPECT_TRUE(playback.dongles.empty());
    EXPECT_EQ(playback.events, (Events{{0, Kind::scanStarted, none, 0}}));
}

Playback playbackOf(std::vector<PlaybackDongle> dongles) {
    Playback playback;
    playback.name = "shop";
    playback.dongles = std::move(dongles);
    return playback;
}

TEST(Playback, OnlyRegisteredDonglesCanBeTheTruth) {
    const Playback playback = playbackOf({{"A", "BT:Bar", "", {}}, {"B", "", "", {}}});
    EXPECT_NO_THROW(requireKnown({{0, "A"}, {1, ""}}, playback, "x"));
    EXPECT_THROW(requireKnown({{0, "A"}, {1, "B"}}, playback, "x"), lines::InputError);
    EXPECT_THROW(requireKnown({{0, "C"}}, playback, "x"), lines::InputError);
}

TEST(Playback, ADongleOfTheTruthThatIsUnknownIsNamedWithItsLine) {
    const Playback playback = playbackOf({{"A", "BT:Bar", "", {}}});
    try {
        requireKnown({{0, "A", 1}, {1, "C", 3}}, playback, "x");
        FAIL() << "nothing was thrown";
    } catch (const lines::InputError& error) {
        EXPECT_STREQ(error.what(), "x:3: \"C\" is the address of no device in shop");
    }
}

}  // namespace
}  // namespace nearcast::lab
