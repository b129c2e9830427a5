// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorPlatform.h"

#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"
#include "unit/platform/simulator/SimulatorRadioFixture.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::simulator {

namespace {

constexpr CBManagerState off = CBManagerStatePoweredOff;
constexpr CBManagerState on = CBManagerStatePoweredOn;

Scene builtIn() { return readScene(builtInScene(), builtInSceneName); }

/// Times and strengths of what is heard from `first` to `last` seconds of the scene, `later` seconds later.
std::vector<std::pair<std::int64_t, std::int32_t>> expected(const Scene& scene, double first, double last,
                                                            double later = 0) {
    std::vector<std::pair<std::int64_t, std::int32_t>> result;
    for (const Advertisement& one : advertisements(scene, last)) {
        if (!one.RSSI || static_cast<double>(one.at.count()) < first * 1e6) continue;
        result.emplace_back(one.at.count() + static_cast<std::int64_t>(later * 1e6), *one.RSSI);
    }
    return result;
}

std::vector<std::pair<std::int64_t, std::int32_t>> heard(const RadioBench& bench) {
    std::vector<std::pair<std::int64_t, std::int32_t>> result;
    for (const Report& report : bench.listener.reports) result.emplace_back(report.at, report.RSSI);
    return result;
}

TEST(SimulatorRadio, HearsWhatHappensInTheShop) {
    RadioBench bench(builtIn());
    bench.scan();
    EXPECT_EQ(bench.runUntil(30), Timeline::End::reached);
    EXPECT_GT(bench.listener.reports.size(), 500U);
    EXPECT_EQ(heard(bench), expected(builtIn(), 0, 30));
}

TEST(SimulatorRadio, StartsTheSceneWithTheFirstScan) {
    RadioBench bench(builtIn());
    EXPECT_EQ(bench.runUntil(100), Timeline::End::reached) << "while it waits for a scan it is not at its end";
    EXPECT_TRUE(bench.listener.reports.empty());
    bench.scan();
    bench.runUntil(110);
    EXPECT_EQ(heard(bench), expected(builtIn(), 0, 10, 100));
}

TEST(SimulatorRadio, LetsTheSceneGoOnWhileNobodyScans) {
    RadioBench bench(builtIn());
    bench.scan();
    bench.runUntil(5);
    bench.radio.stopScan();
    bench.runUntil(20);
    EXPECT_EQ(heard(bench), expected(builtIn(), 0, 5));
    bench.listener.reports.clear();
    bench.scan();
    bench.runUntil(30);
    EXPECT_EQ(heard(bench), expected(builtIn(), 20, 30));
}

TEST(SimulatorRadio, CarriesTheAddressWhereTheDonglePutsIt) {
    std::vector<Dongle> dongles = {dongle(0x1F, {51, 50}), dongle(0x2E, {52, 50}), dongle(0x3D, {53, 50})};
    dongles[1].payload = Dongle::Payload::name;
    dongles[2].payload = Dongle::Payload::both;
    RadioBench bench(quietScene(dongles));
    bench.scan({.allowDuplicates = false});
    bench.runUntil(1);
    ASSERT_EQ(bench.listener.reports.size(), 3U);
    const auto data = [](std::uint8_t last) { return std::vector<std::uint8_t>{0xFF, 0xFF, 2, 0, 0, 0, 0, last}; };
    const auto reportOf = [&](std::int32_t RSSI) {
        return *std::find_if(bench.listener.reports.begin(), bench.listener.reports.end(),
                             [&](const Report& report) { return report.RSSI == RSSI; });
    };
    EXPECT_EQ(reportOf(-54).manufacturerData, data(0x1F));
    EXPECT_EQ(reportOf(-54).name, "");
    EXPECT_EQ(reportOf(-60).manufacturerData, (std::vector<std::uint8_t>{0xFE, 0xFF})) << "not a dongle's";
    EXPECT_EQ(reportOf(-60).name, "QX02000000002E");
    EXPECT_EQ(reportOf(-64).manufacturerData, data(0x3D));
    EXPECT_EQ(reportOf(-64).name, "QX02000000003D");
}

TEST(SimulatorRadio, LetsThroughWhatTheScansFilterNames) {
    RadioBench bench(builtIn());
    bench.radio.scanForPeripheralsWithServices(std::vector{CBUUID::UUIDWithString("180F")}, {.allowDuplicates = true});
    bench.runUntil(5);
    EXPECT_TRUE(bench.listener.reports.empty());
    bench.radio.scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    bench.runUntil(10);
    EXPECT_EQ(heard(bench), expected(builtIn(), 5, 10));
}

TEST(SimulatorRadio, ReportsEachDongleOnceAScanWhenDuplicatesAreNotWanted) {
    RadioBench bench(quietScene({dongle(1, {51, 50}), dongle(2, {52, 50})}));
    bench.scan({.allowDuplicates = false});
    bench.runUntil(10);
    EXPECT_EQ(bench.listener.reports.size(), 2U);
    bench.scan({.allowDuplicates = false});
    bench.runUntil(20);
    EXPECT_EQ(bench.listener.reports.size(), 4U);
    bench.scan();
    bench.runUntil(30);
    EXPECT_GT(bench.listener.reports.size(), 150U);
}

TEST(SimulatorRadio, IsPoweredOnWhereTheSceneSaysNothing) {
    RadioBench bench(builtIn());
    EXPECT_EQ(bench.radio.state(), on);
    bench.scan();
    bench.runUntil(100);
    EXPECT_TRUE(bench.listener.states.empty());
}

TEST(SimulatorRadio, ChangesItsStateAtTimesAfterItsOpening) {
    Scene scene = builtIn();
    scene.radio = {{0, CBManagerStateUnauthorized}, {2, off}, {3.5, on}};
    RadioBench bench(scene);
    EXPECT_EQ(bench.radio.state(), CBManagerStateUnauthorized);
    bench.runUntil(1.999999);
    EXPECT_TRUE(bench.listener.states.empty());
    bench.runUntil(10);
    const std::vector<std::pair<std::int64_t, CBManagerState>> changes = {{2'000'000, off}, {3'500'000, on}};
    EXPECT_EQ(bench.listener.states, changes) << "without any scan";
    EXPECT_EQ(bench.radio.state(), on);
}

TEST(SimulatorRadio, HearsNothingWhileItIsOff) {
    Scene scene = builtIn();
    scene.radio = {{2, off}, {4, on}};
    RadioBench bench(scene);
    bench.scan();
    bench.runUntil(10);
    auto all = expected(builtIn(), 0, 2);
    const auto later = expected(builtIn(), 4, 10);
    all.insert(all.end(), later.begin(), later.end());
    EXPECT_EQ(heard(bench), all);
}

TEST(SimulatorRadio, EndsWhenTheScenesTimeIsOver) {
    Scene scene = builtIn();
    scene.duration = 20;
    scene.radio = {{50, off}};
    RadioBench bench(scene);
    bench.runUntil(10);
    bench.scan();
    EXPECT_EQ(bench.runUntil(1000), Timeline::End::exhausted);
    EXPECT_EQ(bench.timeline->now(), std::chrono::seconds(30)) << "20 s after the scan";
    EXPECT_EQ(heard(bench), expected(builtIn(), 0, 20, 10));
    EXPECT_EQ(bench.runUntil(1000), Timeline::End::reached) << "told once";
    EXPECT_TRUE(bench.listener.states.empty());
}

TEST(SimulatorRadio, NeverEndsInAnEmptyShop) {
    Scene scene = quietScene({});
    scene.radio = {{1, off}};
    RadioBench bench(scene);
    bench.scan();
    EXPECT_EQ(bench.runUntil(1000), Timeline::End::reached);
    EXPECT_EQ(bench.listener.states.size(), 1U);
}

TEST(SimulatorRadio, PutsWhatAHandlerThrowsOnTheConsole) {
    RadioBench bench(builtIn());
    bench.listener.onReport = [] { throw std::runtime_error("no paper"); };
    bench.scan();
    EXPECT_EQ(bench.runUntil(1), Timeline::End::reached);
    EXPECT_EQ(bench.console.lines.size(), bench.listener.reports.size());
    ASSERT_FALSE(bench.console.lines.empty());
    EXPECT_NE(bench.console.lines[0].find("no paper"), std::string::npos);
}

TEST(SimulatorRadio, StopsAtOnceWhenAHandlerStopsTheScan) {
    RadioBench bench(builtIn());
    bench.listener.onReport = [&] { bench.radio.stopScan(); };
    bench.scan();
    bench.runUntil(10);
    EXPECT_EQ(bench.listener.reports.size(), 1U);
}

TEST(SimulatorRadio, GoesOnInsideAHandlerThatSleeps) {
    RadioBench bench(builtIn());
    bench.listener.onReport = [&] {
        bench.listener.onReport = nullptr;
        bench.timeline->sleep(std::chrono::seconds(2));
        EXPECT_GT(bench.listener.reports.size(), 10U);
    };
    bench.scan();
    bench.runUntil(5);
    EXPECT_EQ(heard(bench), expected(builtIn(), 0, 5));
}

}  // namespace

}  // namespace nearcast::simulator
