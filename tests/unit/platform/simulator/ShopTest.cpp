// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Shop.h"

#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"
#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <tuple>

namespace nearcast::simulator {

namespace {

using Row = std::tuple<std::int64_t, std::string, std::int32_t>;  // when, whose, how strong; -1000: not heard

std::vector<Row> rows(const Scene& scene, double seconds) {
    std::vector<Row> result;
    for (const Advertisement& one : advertisements(scene, seconds)) {
        result.emplace_back(one.at.count(), scene.dongles[one.dongle].address, one.RSSI.value_or(-1000));
    }
    return result;
}

std::vector<Row> rowsOf(const std::vector<Row>& all, const std::string& address) {
    std::vector<Row> result;
    std::copy_if(all.begin(), all.end(), std::back_inserter(result),
                 [&](const Row& row) { return std::get<1>(row) == address; });
    return result;
}

Scene builtIn(std::uint64_t seed = 1) {
    Scene scene = readScene(builtInScene(), builtInSceneName);
    scene.seed = seed;
    return scene;
}

TEST(Shop, DoesTheSameTwiceForOneSeed) { EXPECT_EQ(rows(builtIn(4), 120), rows(builtIn(4), 120)); }

TEST(Shop, DoesSomethingElseForAnotherSeed) {
    const auto one = rows(builtIn(4), 120);
    const auto other = rows(builtIn(5), 120);
    std::size_t alike = 0;
    for (std::size_t index = 0; index < std::min(one.size(), other.size()); ++index) {
        if (std::get<0>(one[index]) == std::get<0>(other[index])) ++alike;
    }
    EXPECT_LT(alike, one.size() / 100);
}

TEST(Shop, LetsAnotherDongleChangeNothingForTheOthers) {
    const Scene scene = builtIn();
    Scene more = scene;
    more.dongles.insert(more.dongles.begin() + 2, dongle(0x77, {8, 5}));
    std::swap(more.dongles.front(), more.dongles.back());
    const auto all = rows(scene, 60);
    const auto allWithMore = rows(more, 60);
    for (const Dongle& each : scene.dongles) {
        EXPECT_EQ(rowsOf(all, each.address), rowsOf(allWithMore, each.address)) << each.address;
    }
    EXPECT_FALSE(rowsOf(allWithMore, more.dongles[2].address).empty());
}

TEST(Shop, GivesEveryDongleChancesOfItsOwn) {
    Scene scene = quietScene({dongle(1, {60, 50}), dongle(2, {60, 50})});
    scene.air.jitterDeviation = 4;
    const auto all = advertisements(scene, 200);
    const auto one = heardOf(all, 0);
    const auto other = heardOf(all, 1);
    EXPECT_NE(one[0].at, other[0].at);
    std::vector<double> products;
    for (std::size_t index = 0; index < 1800; ++index) {
        products.push_back((*one[index].RSSI + 74.0) * (*other[index].RSSI + 74.0) / 16);
    }
    EXPECT_NEAR(mean(products), 0, 0.1) << "the strengths have nothing to do with each other";
}

TEST(Shop, LetsASwitchChangeNothingButWhatItSilences) {
    Scene scene = builtIn();
    scene.dongles[0].off.clear();
    const auto always = rows(scene, 20);
    scene.dongles[0].off = {{5, 10}};
    const auto switched = rows(scene, 20);
    ASSERT_EQ(always.size(), switched.size());
    for (std::size_t index = 0; index < always.size(); ++index) {
        const auto [at, address, strength] = always[index];
        const bool silenced = address == scene.dongles[0].address && at >= 5'000'000 && at < 10'000'000;
        EXPECT_EQ(switched[index], Row(at, address, silenced ? -1000 : strength));
    }
}

TEST(Shop, SendsAtTheIntervalAndUpToTenMillisecondsLater) {
    for (const double interval : {0.02, 0.1, 0.1525, 1.0, 10.24}) {
        const auto between = gaps(advertisements(quietScene({dongle(1, {60, 50}, interval)}), 4000 * interval));
        double shortest = 1e9;
        double longest = 0;
        for (const double gap : between) {
            shortest = std::min(shortest, gap - interval);
            longest = std::max(longest, gap - interval);
        }
        EXPECT_GE(shortest, -1e-9) << interval;
        EXPECT_LT(shortest, 0.0001) << interval;
        EXPECT_LE(longest, 0.010 + 1e-9) << interval;
        EXPECT_GT(longest, 0.0099) << interval;
        EXPECT_NEAR(mean(between), interval + 0.005, 0.0003) << interval;
    }
}

TEST(Shop, SendsFirstWithinOneInterval) {
    std::vector<double> firsts;
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        Scene scene = quietScene({dongle(1, {60, 50}, 2)});
        scene.seed = seed;
        firsts.push_back(static_cast<double>(Shop(scene).due()->count()) / 1e6);
    }
    for (const double first : firsts) {
        EXPECT_GE(first, 0);
        EXPECT_LE(first, 2);
    }
    EXPECT_NEAR(mean(firsts), 1, 0.15);
}

TEST(Shop, SendsInOrderOfTime) {
    const auto all = advertisements(builtIn(), 60);
    for (const double gap : gaps(all)) ASSERT_GE(gap, 0);
    for (std::size_t index = 0; index < 6; ++index) {
        EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const auto& one) { return one.dongle == index; }));
    }
}

TEST(Shop, EndsWithItsDurationThatMomentIncluded) {
    Scene scene = quietScene({dongle(1, {60, 50})});
    const auto all = advertisements(scene, 10);
    scene.duration = static_cast<double>(all[20].at.count()) / 1e6;
    EXPECT_EQ(advertisements(scene, 10).size(), 21U);
    *scene.duration -= 1e-6;
    EXPECT_EQ(advertisements(scene, 10).size(), 20U);
    EXPECT_FALSE(Shop(quietScene({})).due());
}

TEST(Shop, HearsANearDongleStrongerThanAFarOne) {
    Scene scene = builtIn();
    scene.floor.walls.clear();
    scene.dongles = {dongle(1, {2, 5}), dongle(2, {4, 5}), dongle(3, {8, 5})};
    scene.user.path = {Waypoint{{1, 5}, 0, 0}};
    std::vector<double> means(3, 0);
    for (scene.seed = 0; scene.seed < 20; ++scene.seed) {
        const auto all = advertisements(scene, 40);
        for (std::size_t index = 0; index < 3; ++index) means[index] += mean(strengths(heardOf(all, index))) / 20;
    }
    EXPECT_NEAR(means[0] - means[1], 20 * std::log10(3.0 / 1), 2);
    EXPECT_NEAR(means[1] - means[2], 20 * std::log10(7.0 / 3), 2);
}

TEST(Shop, FollowsTheUserWhoComesNearAndLeaves) {
    Scene scene = quietScene({dongle(1, {50, 60})});
    scene.user.path = {{{10, 50}, 0, {}}, {{90, 50}, 0, {}}};
    scene.user.speed = 2;
    scene.user.loop = false;
    const auto heard = heardOf(advertisements(scene, 40), 0);
    EXPECT_EQ(heard.front().RSSI, -86);
    EXPECT_EQ(heard[heard.size() / 2].RSSI, -74);
    EXPECT_EQ(heard.back().RSSI, -86);
}

}  // namespace

TEST(Switch, IsOffFromTheFirstMomentToBeforeTheLast) {
    Dongle one = dongle(1, {0, 0});
    one.off = {{3, 5}, {8, 9}};
    const std::pair<double, bool> moments[] = {{0, true},  {2.999999, true}, {3, false}, {4.999999, false}, {5, true},
                                               {8, false}, {9, true},        {13, true}, {1e6, true}};
    for (const auto& [seconds, on] : moments) EXPECT_EQ(switchedOn(one, seconds), on) << seconds;
}

TEST(Switch, GoesOffAgainEveryPeriod) {
    Dongle one = dongle(1, {0, 0});
    one.off = {{3, 5}};
    one.offEvery = 10;
    const std::pair<double, bool> moments[] = {{2.9, true}, {3, false}, {12.9, true},
                                               {13, false}, {15, true}, {73, false}};
    for (const auto& [seconds, on] : moments) EXPECT_EQ(switchedOn(one, seconds), on) << seconds;
}

}  // namespace nearcast::simulator
