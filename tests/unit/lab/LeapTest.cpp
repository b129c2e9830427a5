// SPDX-License-Identifier: Apache-2.0
#include "lab/NearestAsRule.h"
#include "lab/Rule.h"
#include "lab/Score.h"
#include "lab/Thresholds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace nearcast::lab {
namespace {

using Kind = PlaybackEvent::Kind;

constexpr double hour = 3600;
constexpr std::array<const char*, 3> addresses{"A", "B", "C"};

/// The same with an event every half hour that no rule is told of, so that no time is a leap.
Playback sampledWhole(Playback playback) {
    std::vector<PlaybackEvent> events;
    auto event = playback.events.begin();
    for (double at = 0; at <= playback.end; at += hour / 2) {
        for (; event != playback.events.end() && event->at <= at; ++event) events.push_back(*event);
        events.push_back({at, Kind::scanRestarted});
    }
    events.insert(events.end(), event, playback.events.end());
    playback.events = std::move(events);
    return playback;
}

/// Times in which three dongles are heard and the radio may go off and on, with hours between them.
class MadeByChance {
public:
    explicit MadeByChance(unsigned seed) : engine_(seed) {}

    double upTo(double most) { return std::uniform_real_distribution<double>(0, most)(engine_); }
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(engine_); }
    std::string address() { return addresses[static_cast<std::size_t>(below(3))]; }

    Playback playback() {
        Playback made;
        Settings registry;
        for (const char* address : addresses) {
            SettingRecord record{{std::string(kQXDongleMACAddr), address}};
            if (below(2) == 0) record.emplace(kQXThreshouldRSSI, -50 - below(40));
            registry.emplace(address, std::make_shared<const SettingRecord>(std::move(record)));
            made.dongles.push_back({address, address, "", {}});
        }
        made.registry = std::make_shared<const Settings>(std::move(registry));
        double at = below(2) == 0 ? 0 : gap();
        for (int burst = 0; burst < 3; ++burst) {
            for (int event = below(60); event > 0; --event) made.events.push_back(eventAt(at += upTo(2)));
            at += gap();
        }
        made.end = at;
        return made;
    }

    NearestSettings settings() {
        NearestSettings made;
        for (const NearestSetting& setting : nearestSettings()) {
            if (setting.unit == "s" && below(2) == 0) made.*setting.value = setting.most;
        }
        return made;
    }

    lines::Truth truth(double end) {
        lines::Truth marks;
        for (int mark = 0; mark < 12; ++mark) marks.push_back({upTo(end), below(4) == 0 ? "" : address()});
        // On samples too.
        for (lines::TruthMark& mark : marks) mark.at = below(2) == 0 ? mark.at : std::floor(mark.at);
        std::sort(marks.begin(), marks.end(), [](const auto& left, const auto& right) { return left.at < right.at; });
        return marks;
    }

private:
    double gap() { return below(3) == 0 ? hour + upTo(5) : 2 * hour + upTo(2 * hour); }
    PlaybackEvent eventAt(double at) {
        const auto dongle = static_cast<std::uint32_t>(below(3));
        if (below(40) == 0) return {at, Kind::radio, PlaybackEvent::noDongle, below(2) == 0 ? 4 : 5};
        return {at, below(3) == 0 ? Kind::reported : Kind::heard, dongle, -40 - below(50)};
    }

    std::mt19937 engine_;
};

std::uint64_t countOf(const Answers& answers) {
    std::uint64_t count = 0;
    for (const SameAnswer& same : answers) count += same.count;
    return count;
}

class LeapByChance : public testing::TestWithParam<unsigned> {};

TEST_P(LeapByChance, GivesTheAnswersAndTheScoreOfEverySampleOfIt) {
    MadeByChance chance(GetParam());
    const Playback playback = chance.playback();
    const Playback whole = sampledWhole(playback);
    const NearestSettings settings = chance.settings();
    const lines::Truth truth = chance.truth(playback.end);
    for (const NamedRule& rule : rules()) {
        const Answers answers = answersOf(playback, *rule.make(*playback.registry, settings));
        ASSERT_EQ(answers, answersOf(whole, *rule.make(*playback.registry, settings))) << rule.name;
        EXPECT_EQ(countOf(answers), firstSampleFrom(playback.end) + (std::fmod(playback.end, 0.5) == 0 ? 1 : 0));
        Answers single;
        for (const SameAnswer& same : answers) single.insert(single.end(), same.count, {same.answer, 1});
        const Score score = scoreOf(answers, truth);
        const Score plain = scoreOf(single, truth);
        EXPECT_EQ(score.samples, plain.samples);
        EXPECT_EQ(score.right, plain.right);
        EXPECT_EQ(score.answered, plain.answered);
        EXPECT_EQ(score.rightAnswered, plain.rightAnswered);
        EXPECT_EQ(score.wrongSwitches, plain.wrongSwitches);
        EXPECT_EQ(score.changes, plain.changes);
        EXPECT_EQ(score.neverReached, plain.neverReached);
        EXPECT_EQ(score.followed, plain.followed);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LeapByChance, testing::Range(1U, 41U));

/// Counts how often it is asked.
struct Counter : lab::Rule {
    std::uint64_t asked = 0;
    void heard(double /*at*/, std::string_view /*MACAddr*/, std::int32_t /*RSSI*/) override {}
    std::string_view nearest(double /*at*/) override {
        ++asked;
        return {};
    }
};

TEST(Leap, ATimeOfYearsIsAskedForOnceAndCountsForItsLength) {
    Playback playback;
    playback.end = 1e9;
    Counter counter;
    EXPECT_EQ(answersOf(playback, counter), (Answers{{"", 2'000'000'001}}));
    EXPECT_LT(counter.asked, 20'000U);
}

TEST(Leap, NoHourIsAskedForInOneGo) {
    Playback playback;
    playback.end = hour;
    Counter counter;
    answersOf(playback, counter);
    EXPECT_EQ(counter.asked, 7201U);
}

constexpr std::uint64_t many = std::uint64_t{1} << 33;  // more than 32 bits hold

TEST(Leap, ItsSamplesCountOnBothSidesOfAMark) {
    const Score score = scoreOf({{"A", many}}, {{0, "A"}, {static_cast<double>(many) / 8, "B"}});
    EXPECT_EQ(score.samples, many);
    EXPECT_EQ(score.right, many / 4);
    EXPECT_EQ(score.neverReached, 1U);
}

TEST(Leap, ASwitchToAWrongDongleIsOneHoweverLongItLasts) {
    EXPECT_EQ(scoreOf({{"A", 1}, {"B", many}}, {{0, "A"}}).wrongSwitches, 1U);
    EXPECT_EQ(scoreOf({{"B", many}}, {{0, "A"}, {10, "C"}, {20, "A"}}).wrongSwitches, 1U);
}

TEST(Leap, ItsHalvesAreThoseOfTheStay) {
    Standing standing;
    standing.begin({0, static_cast<double>(many) / 2, "A"});
    standing.take({0, many}, {{"A", -50}});
    ASSERT_EQ(standing.samples().size(), 2U);
    EXPECT_EQ(standing.samples()[0].count, many / 2);
    EXPECT_FALSE(standing.samples()[0].laterHalf);
    EXPECT_EQ(standing.samples()[1].count, many / 2);
    EXPECT_TRUE(standing.samples()[1].laterHalf);
    EXPECT_EQ(standing.levelsOf(0), (std::vector<double>{-50, -50}));
}

TEST(Leap, SharesWeighEachOfItsSamples) {
    Standing standing;
    standing.begin({0, 10, "A"});
    standing.take({0, 10}, {{"A", -50}});
    standing.take({10, 10}, {{"A", -50}});
    standing.begin({0, static_cast<double>(many), "B"});
    standing.take({0, many}, {{"A", -70}});         // the first half of the stay
    standing.take({many, many / 2}, {{"A", -70}});  // and three quarters
    standing.take({many + many / 2, many / 2}, {{"A", -40}});
    const ThresholdAdvice advice = adviseThresholds(standing)[0];
    // The first half separates at -60, by which half of the second is inside.
    EXPECT_EQ(advice.intruding, 0.25);
}

}  // namespace
}  // namespace nearcast::lab
