// SPDX-License-Identifier: Apache-2.0
#include "proximity/Smoothing.h"
#include "support/Queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <vector>

namespace nearcast {
namespace {

using Stage = Smoothing::Stage;

/// The outputs of readings in order, the first one among them; "no output" is left out.
std::vector<std::int32_t> outputsOf(std::uint64_t window, const std::vector<std::int32_t>& readings) {
    std::vector<std::int32_t> outputs;
    Smoothing smoothing(window, readings.at(0));
    for (std::size_t place = 1; place < readings.size(); ++place) {
        const auto result = smoothing.add(readings[place], window);
        if (result.output) outputs.push_back(*result.output);
    }
    return outputs;
}

using Values = std::vector<std::int32_t>;

TEST(Smoothing, TheSeventhReadingOfAWindowOfSevenGivesTheFirstOutputTheLargest) {
    EXPECT_EQ(outputsOf(7, {-60, -70, -70, -70, -70, -70}), Values{});
    EXPECT_EQ(outputsOf(7, {-60, -70, -70, -70, -70, -70, -70}), Values{-60});
    EXPECT_EQ(outputsOf(7, {-70, -70, -70, -55, -70, -70, -65}), Values{-55});
    EXPECT_EQ(outputsOf(7, {-70, -70, -70, -70, -70, -70, -51}), Values{-51});
}

TEST(Smoothing, TheFirstReadingGivesNoOutputEvenWithAWindowOfOne) {
    EXPECT_EQ(outputsOf(1, {-60}), Values{});
    EXPECT_EQ(Smoothing(1, -60).lastOutput(), nullptr);
}

TEST(Smoothing, AWindowOfOneReportsEveryLaterReadingAsItComes) {
    EXPECT_EQ(outputsOf(1, {-60, -61, -90, -20, -20, -128, 127}), (Values{-61, -90, -20, -20, -128, 127}));
}

TEST(Smoothing, AReadingLeavesTheWindowAfterAsManyOthers) {
    EXPECT_EQ(outputsOf(3, {-50, -60, -60, -60, -60}), (Values{-50, -60, -60}));
}

TEST(Smoothing, WhileTheHistoryFillsEveryCandidateIsTheOutput) {
    EXPECT_EQ(outputsOf(2, {-60, -60, -20}), (Values{-60, -20}));
    EXPECT_EQ(outputsOf(3, {-60, -60, -60, -20, -20}), (Values{-60, -20, -20}));
}

TEST(Smoothing, ADifferenceOfTwoIsFollowedAndOneOfThreeIsHeldWhereTheHistoryFollowed) {
    // Both windows of two are full after three readings, with -60 everywhere.
    EXPECT_EQ(outputsOf(2, {-60, -60, -60, -62, -62}).back(), -62);
    EXPECT_EQ(outputsOf(2, {-60, -60, -60, -63, -63}).back(), -60);
    EXPECT_EQ(outputsOf(2, {-60, -60, -60, -58}).back(), -58);
    EXPECT_EQ(outputsOf(2, {-60, -60, -60, -57}).back(), -60);
}

TEST(Smoothing, AStepIsTakenOverOnceTheWholeHistoryShowsTheGap) {
    // The candidate of each step is compared with the output before it: -60 against -50 four times.
    const auto outputs = outputsOf(3, {-60, -60, -60, -60, -60, -50, -50, -50, -50});
    EXPECT_EQ(outputs, (Values{-60, -60, -60, -60, -60, -50, -50}));
}

TEST(Smoothing, OneStepOfTheHistoryWithinTwoHoldsAndOneOfThreeDoesNot) {
    // Windows of 2: the history is one step, from the older output to the newer candidate.
    EXPECT_EQ(outputsOf(2, {-60, -60, -58, -50}), (Values{-60, -58, -58}));
    EXPECT_EQ(outputsOf(2, {-60, -60, -57, -50}), (Values{-60, -57, -50}));
}

TEST(Smoothing, SaysHowFarTheWindowsAreFilled) {
    Smoothing smoothing(2, -60);
    const Smoothing::Result second = smoothing.add(-61, 2);
    EXPECT_EQ(second.stage, Stage::settling);
    EXPECT_EQ(second.readings, 2U);
    EXPECT_EQ(second.outputs, 0U);
    EXPECT_EQ(smoothing.add(-61, 2).outputs, 1U);
    const Smoothing::Result fourth = smoothing.add(-61, 2);
    EXPECT_EQ(fourth.stage, Stage::holding);
    EXPECT_EQ(fourth.outputs, 2U);
    EXPECT_EQ(smoothing.add(-61, 3).stage, Stage::filling);
}

TEST(Smoothing, AWindowMadeSmallNeverFillsALargerNumberAndKeepsItsLastOutput) {
    Smoothing smoothing(1, -60);
    EXPECT_EQ(smoothing.add(-61, 1).output, -61);
    for (int times = 0; times < 10; ++times) EXPECT_EQ(smoothing.add(-50, 2).output, std::nullopt);
    EXPECT_EQ(*smoothing.lastOutput(), -61);
    EXPECT_EQ(smoothing.add(-52, 1).output, -52) << "the history of one step holds nothing";
}

TEST(Smoothing, AWindowMadeLargeGivesOutputsAtASmallerNumber) {
    Smoothing smoothing(7, -60);
    EXPECT_EQ(smoothing.add(-70, 2).output, -60);
    EXPECT_EQ(smoothing.add(-70, 2).output, -60) << "the window still holds all it was made for";
}

TEST(Smoothing, ANumberThatNoWindowReachesTakesNoMemoryForItself) {
    Smoothing smoothing(std::numeric_limits<std::uint64_t>::max(), -60);
    EXPECT_EQ(smoothing.add(-60, std::numeric_limits<std::uint64_t>::max()).readings, 2U);
}

TEST(Smoothing, DifferencesAreThoseOf32BitMachines) {
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(outputsOf(2, {largest, largest, largest, least, least}).back(), least) << "they wrap to 1";
    EXPECT_EQ(outputsOf(2, {-60, -60, -60, largest}).back(), -60);
}

/// The rule, as plain as can be: three windows, and a walk through all of them for every reading.
class PlainRule {
public:
    PlainRule(std::uint64_t capacity, int first) : raw_(capacity), maxima_(capacity), outputs_(capacity) {
        raw_.enqueue(first);
    }

    std::optional<int> add(int reading, std::size_t number) {
        raw_.enqueue(reading);
        if (raw_.count() < number) return std::nullopt;
        int max = reading;
        for (const int one : raw_) max = std::max(max, one);
        const int output = outputs_.count() < number || !holds(max) ? max : *outputs_.lastObject();
        maxima_.enqueue(max);
        outputs_.enqueue(output);
        return output;
    }

private:
    [[nodiscard]] bool holds(int max) const {
        if (std::abs(*outputs_.lastObject() - max) < 3) return false;
        for (std::size_t i = 1; i < maxima_.count(); ++i) {
            if (std::abs(outputs_[i - 1] - maxima_[i]) <= 2) return true;
        }
        return false;
    }

    Queue<int> raw_;
    Queue<int> maxima_;
    Queue<int> outputs_;
};

/// A signal that wanders, jumps and is drowned in noise by turns.
class Signal {
public:
    explicit Signal(std::uint32_t seed) : engine_(seed) {}
    int next() {
        if (below(15) == 0) level_ = static_cast<int>(below(256)) - 128;
        const int noise = static_cast<int>(below(2 * spread_ + 1)) - static_cast<int>(spread_);
        if (below(20) == 0) spread_ = below(5);
        return std::clamp(level_ + noise, -128, 127);
    }
    std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(engine_() % count); }

private:
    std::mt19937 engine_;
    int level_ = -60;
    std::uint32_t spread_ = 1;
};

TEST(Smoothing, AgreesWithThePlainRuleForWindowsOf1To64) {
    for (std::uint32_t window = 1; window <= 64; ++window) {
        Signal signal(window);
        const int first = signal.next();
        Smoothing smoothing(window, first);
        PlainRule rule(window, first);
        for (int count = 0; count < 2000; ++count) {
            const int reading = signal.next();
            ASSERT_EQ(smoothing.add(reading, window).output, rule.add(reading, window)) << window << ", " << count;
        }
    }
}

TEST(Smoothing, AgreesWithThePlainRuleWhileTheSamplingNumberChanges) {
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        Signal signal(seed);
        const std::uint32_t capacity = 1 + signal.below(12);
        const int first = signal.next();
        Smoothing smoothing(capacity, first);
        PlainRule rule(capacity, first);
        std::uint32_t number = capacity;
        for (int count = 0; count < 500; ++count) {
            if (signal.below(10) == 0) number = 1 + signal.below(14);
            const int reading = signal.next();
            ASSERT_EQ(smoothing.add(reading, number).output, rule.add(reading, number)) << seed << ", " << count;
        }
    }
}

}  // namespace
}  // namespace nearcast
