// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

#include <algorithm>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class SessionScan : public BluezSessionTest {};

TEST_F(SessionScan, DoesNotScanUnlessAsked) {
    bench.pass(60s);
    EXPECT_EQ(bluez().count("StartDiscovery"), 0);
    EXPECT_EQ(bluez().count("RegisterMonitor"), 0);
    EXPECT_EQ(bench.reports, 0);
}

TEST_F(SessionScan, PassesEveryReportOnOnce) {
    scan();
    bench.pass(20s);
    EXPECT_EQ(bench.reports, bluez().reports());
    EXPECT_GE(bench.reports, 205);
}

TEST_F(SessionScan, TakesADeviceThatIsShownWithoutAReadingForNoReport) {
    bluez().dongle(0).silent = true;
    scan();
    bluez().showUnheard(0);
    EXPECT_EQ(bench.reportsIn(1s), 0);
}

TEST_F(SessionScan, SetsTheFilterBeforeItStarts) {
    scan();
    const auto& calls = bluez().calls();
    const auto filter = std::find(calls.begin(), calls.end(), "SetDiscoveryFilter");
    const auto start = std::find(calls.begin(), calls.end(), "StartDiscovery");
    ASSERT_NE(start, calls.end());
    EXPECT_LT(filter, start);
}

TEST_F(SessionScan, MakesAReportWholeFromWhatIsRemembered) {
    bluez().dongle(0).name = "Printer";
    scan();
    EXPECT_GT(bench.reports, 1);
    EXPECT_EQ(bench.last.name, "Printer");
    EXPECT_EQ(bench.last.services.size(), 1U);
    EXPECT_EQ(bench.last.manufacturerData, (std::vector<std::uint8_t>{0xFF, 0xFF, 2, 0, 0, 0, 0, 1}));
    EXPECT_EQ(bench.last.address, (DeviceAddress{2, 0, 0, 0, 0, 1}));
    EXPECT_EQ(bench.last.RSSI, -60);
}

TEST_F(SessionScan, DoesNotTakeTheListForReports) {
    scan();
    bluez().dongle(0).silent = true;
    bench.settle();
    bluez().breakBus({"System.Error", "gone"});
    bluez().mendBus();
    bluez().dongle(0).silent = true;
    EXPECT_EQ(bench.reportsIn(5s), 0);
}

TEST_F(SessionScan, StopsWhenItIsNoLongerWanted) {
    scan();
    bench.session.want(false);
    bench.pass(Discovery::linger - 1ns);
    EXPECT_EQ(bluez().count("StopDiscovery"), 0);
    bench.pass(1ns + 2 * FakeBluez::latency);
    EXPECT_FALSE(bluez().discovers("hci0"));
}

TEST_F(SessionScan, GoesOnWhenTheWishIsRenewedAtOnce) {
    scan();
    bench.session.want(false);
    bench.pass(Discovery::linger - 1ns);
    bench.session.want(true);
    bench.pass(10s);
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
    EXPECT_EQ(bluez().count("StopDiscovery"), 0);
    EXPECT_EQ(bench.restarts, 0);
}

TEST_F(SessionScan, StartsAgainAfterAStop) {
    scan();
    bench.session.want(false);
    bench.pass(5s);
    bench.session.want(true);
    EXPECT_GE(bench.reportsIn(2s), 18);
    EXPECT_EQ(bench.restarts, 0) << "it was asked for";
}

TEST_F(SessionScan, StopsInTheEndThoughBluetoothdIsBusy) {
    scan();
    bluez().failAlways("StopDiscovery", error::inProgress);
    bench.session.want(false);
    bench.pass(5s);
    bluez().failAlways("StopDiscovery", "");
    bench.pass(3s);
    EXPECT_FALSE(bluez().discovers("hci0"));
}

TEST_F(SessionScan, EndsAnOwnDiscoveryThatIsInTheWayOfTheStart) {
    bluez().failNext("StartDiscovery", error::inProgress);
    scan();
    EXPECT_GE(bluez().count("StopDiscovery"), 1);
    EXPECT_TRUE(bluez().discovers("hci0"));
    EXPECT_EQ(why(), "");
}

TEST_F(SessionScan, SaysWhyTheScanDoesNotStart) {
    bluez().failAlways("StartDiscovery", "org.bluez.Error.Failed");
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(says("the scan cannot be started: org.bluez.Error.Failed")) << why();
}

TEST_F(SessionScan, DoesNotSpeakOfAStartThatFailsOnce) {
    bluez().failNext("StartDiscovery", "org.bluez.Error.Failed");
    scan();
    EXPECT_TRUE(bluez().discovers("hci0"));
    ASSERT_EQ(bench.conditions.size(), 1U) << bench.conditions.back().why;
    EXPECT_EQ(bench.conditions[0], (RadioCondition{CBManagerStatePoweredOn, ""}));
}

TEST_F(SessionScan, TriesAgainWithPausesThatGrowToTwoSeconds) {
    bluez().failAlways("StartDiscovery", "org.bluez.Error.Failed");
    bench.session.want(true);
    bench.pass(60s);
    EXPECT_GE(bluez().count("StartDiscovery"), 25);
    EXPECT_LE(bluez().count("StartDiscovery"), 35);
}

TEST_F(SessionScan, AsksForADeviceThatItWasNeverToldOf) {
    bluez().forgetToTell(true);
    scan();
    EXPECT_EQ(bluez().count("GetAll"), 1);
    EXPECT_EQ(bench.last.services.size(), 1U);
}

/// Two dongles that the session was never told of, heard for the first time so far apart.
class SessionOfStrangers : public BluezSessionTest {
protected:
    int questionsWith(Time interval) {
        bluez().dongle(0).silent = true;
        bluez().forgetToTell(true);
        scan();
        bluez().place({.address = "02:00:00:00:00:0A"});
        bluez().at(bench.now() + interval, [this] { bluez().place({.address = "02:00:00:00:00:0B"}); });
        bench.pass(150ms);  // each of them once: they advertise every 100 ms
        return bluez().count("GetAll");
    }
};

TEST_F(SessionOfStrangers, AsksAgainAfter20Milliseconds) { EXPECT_EQ(questionsWith(20ms), 2); }

TEST_F(SessionOfStrangers, DoesNotAskAgainBefore20Milliseconds) { EXPECT_EQ(questionsWith(20ms - 1ns), 1); }

TEST_F(SessionScan, RegistersNoMonitorWhereNoneIsOffered) {
    scan();
    EXPECT_EQ(bluez().count("RegisterMonitor"), 0);
}

TEST_F(SessionScan, HearsLittleOfAStrictControllerWithoutAMonitor) {
    bluez().beStrict();
    scan();
    EXPECT_LE(bench.reportsIn(20s), 3);
}

TEST(SessionOfOneOfManyAdapters, HearsNothingOfAnAdapterWhoseNameBeginsLikeItsOwn) {
    BluezBench bench("hci1");
    bench.bluez.plug("hci1");
    bench.bluez.plug("hci10");
    bench.bluez.discoverForAnother("hci10");
    bench.bluez.place({.adapter = "hci10", .address = "02:00:00:00:00:10"});
    bench.session.want(true);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci1"));
    EXPECT_GT(bench.bluez.reports(), 5) << "the session is told of them";
    EXPECT_EQ(bench.reports, 0);
    bench.bluez.place({.adapter = "hci1", .address = "02:00:00:00:00:01"});
    EXPECT_GE(bench.reportsIn(1s), 9);
}

class SessionWithMonitors : public BluezSessionTest {
protected:
    SessionWithMonitors() { bluez().plug("hci0", true, true); }
};

TEST_F(SessionWithMonitors, HearsEverythingOfAStrictController) {
    bluez().beStrict();
    scan();
    EXPECT_GE(bench.reportsIn(20s), 199);
}

TEST_F(SessionWithMonitors, RegistersOne) {
    scan();
    bench.pass(300s);
    EXPECT_TRUE(bluez().monitored());
    EXPECT_EQ(bluez().count("RegisterMonitor"), 1);
}

TEST_F(SessionWithMonitors, ScansWithoutOneThatIsRefused) {
    bluez().failAlways("RegisterMonitor", "org.bluez.Error.Failed");
    scan();
    EXPECT_GE(bench.reportsIn(2s), 19);
    EXPECT_EQ(bluez().count("RegisterMonitor"), 1);
}

TEST_F(SessionWithMonitors, ScansWithoutOneWhoseRegistrationHangs) {
    bluez().holdAnswers("RegisterMonitor");
    bench.session.want(true);
    bench.pass(MonitorKeeper::grace);
    EXPECT_EQ(bluez().count("StartDiscovery"), 0);
    bench.pass(50ms);
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
    EXPECT_GE(bench.reportsIn(1s), 9);
    bluez().releaseAnswers();
    bench.session.want(false);
    bench.pass(2s);
    EXPECT_FALSE(bluez().monitored());
}

TEST_F(SessionWithMonitors, BeginsAfterARegistrationThatDoesNotHang) {
    scan();
    const auto& calls = bluez().calls();
    const auto place = [&](const char* method) { return std::find(calls.begin(), calls.end(), method); };
    EXPECT_LT(place("RegisterMonitor"), place("StartDiscovery"));
    EXPECT_NE(place("StartDiscovery"), calls.end());
}

TEST_F(SessionWithMonitors, TakesItBackWithTheScan) {
    scan();
    bench.session.want(false);
    bench.pass(2s);
    EXPECT_FALSE(bluez().monitored());
}

TEST_F(SessionWithMonitors, RegistersAnotherAfterBluetoothdHasComeBack) {
    scan();
    bluez().killDaemon();
    bench.settle();
    bluez().startDaemon();
    bench.settle();
    EXPECT_TRUE(bluez().monitored());
}

TEST_F(SessionWithMonitors, KeepsItAcrossPowerOffAndOn) {
    scan();
    bluez().power("hci0", false);
    bench.settle();
    bluez().power("hci0", true);
    bench.settle();
    EXPECT_EQ(bluez().count("RegisterMonitor"), 1);
    EXPECT_TRUE(bluez().monitored());
}

TEST_F(SessionWithMonitors, RegistersAnotherWhenItIsReleased) {
    scan();
    bluez().releaseMonitor();
    bench.pass(MonitorKeeper::firstPause - 1ms);
    EXPECT_FALSE(bluez().monitored());
    bench.pass(50ms);
    EXPECT_TRUE(bluez().monitored());
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
}

TEST_F(SessionWithMonitors, RegistersLessAndLessOftenWhatIsAlwaysReleased) {
    scan();
    for (int second = 0; second < 600; ++second) {
        if (bluez().monitored()) bluez().releaseMonitor();
        bench.pass(1s);
    }
    // After 1/4, 1/2, 1, ... 32 and then every 60 seconds.
    EXPECT_GE(bluez().count("RegisterMonitor"), 15);
    EXPECT_LE(bluez().count("RegisterMonitor"), 19);
}

TEST_F(SessionWithMonitors, RegistersNoOtherWhileNoScanIsWanted) {
    scan();
    bluez().releaseMonitor();
    bench.session.want(false);
    bench.pass(60s);
    EXPECT_LE(bluez().count("RegisterMonitor"), 2);
    EXPECT_FALSE(bluez().monitored());
}

}  // namespace

}  // namespace nearcast::bluez
