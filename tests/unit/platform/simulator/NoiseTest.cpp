// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"
#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

// What receivers at fixed places recorded of beacons in shops and halls, in stretches of 40 s: a standard deviation of
// 3.3 to 5.7 dB, a range of 8 to 32 dB, half of all gaps between reports shorter than 0.1 to 0.5 s, some lost. These
// tests measure the same of the built-in scene; `--gtest_filter='Noise.*'` prints the figures.

namespace nearcast::simulator {

namespace {

struct Figures {
    double deviation;  ///< dB
    double range;      ///< dB
    double medianGap;  ///< seconds
    double lost;       ///< share
};

double quantile(std::vector<double> values, double part) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

Figures figuresOf(const std::vector<Advertisement>& all, std::size_t dongle) {
    const auto heard = heardOf(all, dongle);
    const auto values = strengths(heard);
    const auto sent = std::count_if(all.begin(), all.end(), [&](const auto& one) { return one.dongle == dongle; });
    return {standardDeviation(values), quantile(values, 1) - quantile(values, 0), quantile(gaps(heard), 0.5),
            1 - static_cast<double>(values.size()) / static_cast<double>(sent)};
}

/// Every place of the built-in scene where the waiter stops, every dongle, ten seeds.
std::vector<Figures> measure() {
    std::vector<Figures> result;
    const Scene builtIn = readScene(builtInScene(), builtInSceneName);
    for (const Waypoint& place : builtIn.user.path) {
        if (place.pause <= 0) continue;
        Scene scene = builtIn;
        scene.user.path = {place};
        for (Dongle& dongle : scene.dongles) dongle.off.clear();
        for (scene.seed = 1; scene.seed <= 10; ++scene.seed) {
            const auto all = advertisements(scene, 40);
            for (std::size_t index = 0; index < scene.dongles.size(); ++index) {
                result.push_back(figuresOf(all, index));
            }
        }
    }
    return result;
}

std::vector<double> column(double Figures::*member) {
    static const std::vector<Figures> all = measure();
    std::vector<double> result;
    result.reserve(all.size());
    for (const Figures& one : all) result.push_back(one.*member);
    return result;
}

/// Prints the quantiles, and checks that all lie between two bounds and there are as many as there should be.
void expectWithin(const char* what, double Figures::*member, double lowest, double highest) {
    const auto values = column(member);
    ASSERT_EQ(values.size(), 6U * 6U * 10U);
    std::cout << what << ": least " << quantile(values, 0) << ", median " << quantile(values, 0.5) << ", 99 % "
              << quantile(values, 0.99) << ", most " << quantile(values, 1) << '\n';
    EXPECT_GE(quantile(values, 0), lowest);
    EXPECT_LE(quantile(values, 1), highest);
}

TEST(Noise, HasTheMeasuredStandardDeviationAtAFixedPlace) {
    expectWithin("standard deviation (dB)", &Figures::deviation, 3.3, 5.7);
}

TEST(Noise, HasTheMeasuredRangeAtAFixedPlace) { expectWithin("range (dB)", &Figures::range, 8, 32); }

TEST(Noise, HasTheMeasuredGapsBetweenReports) { expectWithin("median gap (s)", &Figures::medianGap, 0.1, 0.5); }

TEST(Noise, LosesSomeAdvertisements) { expectWithin("lost", &Figures::lost, 0.05, 0.5); }

}  // namespace

}  // namespace nearcast::simulator
