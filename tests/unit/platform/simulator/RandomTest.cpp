// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Random.h"

#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <set>

namespace nearcast::simulator {

namespace {

TEST(Random, GivesTheSameNumbersForTheSameSeedAndName) {
    Random one(7, "a");
    Random other(7, "a");
    for (int index = 0; index < 1000; ++index) ASSERT_EQ(one.next(), other.next());
}

TEST(Random, GivesOtherNumbersForAnotherSeedOrName) {
    std::set<std::uint64_t> firsts;
    for (const std::uint64_t seed : {0U, 1U, 2U}) {
        for (const std::string_view name : {"", "a", "b", "ab", "ba", "aa"}) firsts.insert(Random(seed, name).next());
    }
    EXPECT_EQ(firsts.size(), 18U);
}

// Worked out with another program; every compiler, library and processor has to give them too.
TEST(Random, GivesTheNumbersThatTheFormulasSay) {
    Random random(1, "02:00:00:00:00:01");
    EXPECT_EQ(random.next(), 2770334115049946903U);
    EXPECT_EQ(random.next(), 18259667110398758574U);
    EXPECT_DOUBLE_EQ(random.uniform(), 0.6001736574794249);
    EXPECT_NEAR(random.normals().first, -0.16916417614337081, 1e-12);
}

TEST(Random, SpreadsUniformNumbersEvenlyBelowOne) {
    Random random(3, "uniform");
    std::vector<double> values;
    values.reserve(100'000);
    for (int index = 0; index < 100'000; ++index) values.push_back(random.uniform());
    for (const double value : values) {
        ASSERT_GE(value, 0);
        ASSERT_LT(value, 1);
    }
    EXPECT_NEAR(mean(values), 0.5, 0.005);
    EXPECT_NEAR(standardDeviation(values), std::sqrt(1.0 / 12), 0.005);
}

TEST(Random, ReachesBothEndsOfARange) {
    Random random(3, "range");
    std::vector<int> counts(4, 0);
    for (int index = 0; index < 40'000; ++index) ++counts.at(random.upTo(3));
    for (const int count : counts) EXPECT_NEAR(count, 10'000, 400);
}

TEST(Random, GivesTwoIndependentNormalDeviates) {
    Random random(3, "normal");
    std::vector<double> firsts;
    std::vector<double> seconds;
    std::vector<double> products;
    for (int index = 0; index < 100'000; ++index) {
        const auto [first, second] = random.normals();
        firsts.push_back(first);
        seconds.push_back(second);
        products.push_back(first * second);
    }
    for (const auto* values : {&firsts, &seconds}) {
        EXPECT_NEAR(mean(*values), 0, 0.01);
        EXPECT_NEAR(standardDeviation(*values), 1, 0.01);
    }
    EXPECT_NEAR(mean(products), 0, 0.01);
}

}  // namespace

}  // namespace nearcast::simulator
