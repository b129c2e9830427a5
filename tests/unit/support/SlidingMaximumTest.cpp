// SPDX-License-Identifier: Apache-2.0
#include "support/SlidingMaximum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace nearcast {
namespace {

using Values = std::vector<std::int32_t>;

template <class Maximum = SlidingMaximum>
Values maximaOf(std::uint64_t window, const Values& samples) {
    Maximum maximum(window);
    Values maxima;
    for (const std::int32_t sample : samples) maxima.push_back(maximum.add(sample));
    return maxima;
}

Values plainMaximaOf(std::size_t window, const Values& samples) {
    Values maxima;
    for (std::size_t end = 1; end <= samples.size(); ++end) {
        const auto last = samples.begin() + static_cast<std::ptrdiff_t>(end);
        maxima.push_back(*std::max_element(last - static_cast<std::ptrdiff_t>(std::min(window, end)), last));
    }
    return maxima;
}

Values someSamples(std::uint32_t seed, std::size_t count) {
    std::mt19937 random(seed);
    Values samples(count);
    // Falling for a while, then anything: long runs of samples that stay possible maxima.
    for (std::size_t place = 0; place < count; ++place) {
        samples[place] =
            place % 100 < 50 ? -static_cast<std::int32_t>(place % 50) : static_cast<int>(random() % 256) - 128;
    }
    return samples;
}

TEST(SlidingMaximum, ASampleLeavesTheWindowAfterAsManyOthers) {
    EXPECT_EQ(maximaOf(3, {9, 1, 2, 3, 0, 0, 0}), (Values{9, 9, 9, 3, 3, 3, 0}));
}

TEST(SlidingMaximum, OfTwoEqualSamplesTheLaterOneLastsLonger) {
    EXPECT_EQ(maximaOf(3, {5, 1, 5, 1, 1, 1}), (Values{5, 5, 5, 5, 5, 1}));
}

TEST(SlidingMaximum, AWindowOfOneGivesEverySampleAndOneOfNoneTooButHoldsNothing) {
    EXPECT_EQ(maximaOf(1, {5, 1, 7, -3}), (Values{5, 1, 7, -3}));
    EXPECT_EQ(maximaOf(0, {5, 1, 7, -3}), (Values{5, 1, 7, -3}));
    SlidingMaximum none(0);
    none.add(5);
    EXPECT_EQ(none.count(), 0U);
}

TEST(SlidingMaximum, CountsUpToItsWindow) {
    SlidingMaximum maximum(2);
    for (const std::uint64_t count : {1U, 2U, 2U}) {
        maximum.add(0);
        EXPECT_EQ(maximum.count(), count);
    }
}

TEST(SlidingMaximum, AgreesWithAWalkThroughTheWindow) {
    for (std::uint32_t window = 1; window <= 120; ++window) {
        const Values samples = someSamples(window, 1000);
        ASSERT_EQ(maximaOf(window, samples), plainMaximaOf(window, samples)) << window;
    }
}

TEST(SlidingMaximum, ASampleStandsForMoreOthersThanItsCounterHolds) {
    Values samples = someSamples(1, 3000);
    std::fill(samples.begin() + 500, samples.begin() + 1100, -100);
    samples[1100] = 100;
    for (const std::uint32_t window : {255U, 256U, 257U, 700U}) {
        ASSERT_EQ(maximaOf<SlidingMaximumOf<std::uint8_t>>(window, samples), plainMaximaOf(window, samples)) << window;
    }
}

TEST(SlidingMaximum, AWindowOfAnySizeTakesMemoryForSamplesAlone) {
    constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();
    const Values samples = someSamples(3, 1000);
    EXPECT_EQ(maximaOf(endless, samples), plainMaximaOf(samples.size(), samples));
}

}  // namespace
}  // namespace nearcast
