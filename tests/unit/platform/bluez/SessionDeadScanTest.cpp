// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

#include <algorithm>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

constexpr const char* dead = "the scan is dead";
constexpr const char* unproven = "the scan was dead and has been begun again";

/// bluetoothd has missed the end of a round, and nobody here may speak to the kernel.
class SessionDeadScan : public BluezSessionTest {
protected:
    SessionDeadScan() {
        scan();
        bench.pass(20s);
    }

    /// Long enough for the watchdog to find it.
    void die() {
        bluez().starve("hci0");
        bench.pass(35s);
    }
    [[nodiscard]] bool wasEverWellSince(std::size_t count) const {
        return std::any_of(bench.conditions.begin() + static_cast<std::ptrdiff_t>(count), bench.conditions.end(),
                           [](const RadioCondition& told) { return told.why.empty(); });
    }
};

TEST_F(SessionDeadScan, IsRecognisedByTheAnswersToAStop) {
    bluez().starve("hci0");
    bench.pass(Standstill::limit - 1ms);
    EXPECT_EQ(why(), "");
    EXPECT_EQ(bluez().count("StopDiscovery"), 0);
    bench.pass(6s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(says(dead)) << why();
    EXPECT_TRUE(says("systemctl restart bluetooth") && says("-E") && says("CAP_NET_ADMIN")) << why();
}

TEST_F(SessionDeadScan, IsRecognisedByTheWatchdogWhereEventsCannotBeCounted) {
    bench.mgmt.counts = false;
    bluez().starve("hci0");
    bench.pass(29s);
    EXPECT_EQ(why(), "");
    bench.pass(4s);
    EXPECT_TRUE(says(dead)) << why();
}

TEST_F(SessionDeadScan, IsNotFoundInQuietAir) {
    bluez().deafen(true);
    bench.pass(3600s);
    EXPECT_TRUE(says("quiet air")) << why();
    EXPECT_EQ(bench.restarts, 10) << "as often as the watchdog wants";
}

TEST_F(SessionDeadScan, IsLookedForOnceWhereAnotherClientKeepsItFromBeingRecognised) {
    bluez().discoverForAnother("hci0");
    bench.settle();
    bluez().starve("hci0");
    bench.pass(30s);
    EXPECT_EQ(bluez().count("StopDiscovery"), 1) << "which succeeds, for the other one";
    EXPECT_TRUE(says("nothing at all is heard")) << why();
}

/// In the moment between two rounds a living one answers the same.
TEST_F(SessionDeadScan, IsNotFoundByStopsThatComeAtABadMomentNowAndThen) {
    bluez().deafen(true);
    for (int turn = 0; turn < 4; ++turn) {
        const int stops = bluez().count("StopDiscovery");
        bluez().failNext("StopDiscovery", error::inProgress);
        while (bluez().count("StopDiscovery") == stops) bench.pass(10ms);
        bluez().failNext("StopDiscovery", error::failed);
        bench.pass(20s);
    }
    EXPECT_TRUE(says("quiet air")) << why();
    EXPECT_TRUE(std::none_of(bench.conditions.begin(), bench.conditions.end(),
                             [](const auto& told) { return told.why.find("dead") != std::string::npos; }));
}

TEST_F(SessionDeadScan, IsSuspectedAnewAfterAReport) {
    const auto untilTwoStops = [this] {
        const int stops = bluez().count("StopDiscovery");
        while (bluez().count("StopDiscovery") < stops + 2) bench.pass(10ms);
        bench.pass(100ms);
    };
    bluez().starve("hci0");
    untilTwoStops();
    bluez().startInKernel("hci0");
    bluez().stopInKernel("hci0");
    bench.pass(20s);
    ASSERT_EQ(why(), "");
    bluez().starve("hci0");
    untilTwoStops();
    EXPECT_FALSE(says(dead)) << why();
    untilTwoStops();
    EXPECT_TRUE(says(dead)) << why();
}

TEST_F(SessionDeadScan, StaysFoundThoughAnotherClientLetsAStopSucceed) {
    die();
    bluez().discoverForAnother("hci0");
    bench.pass(100s);
    EXPECT_TRUE(says(dead)) << why();
}

/// As it is above some hundred reports a second.
TEST_F(SessionDeadScan, IsNotFoundWhereBluetoothdIsBusyWhileReportsCome) {
    for (int turn = 0; turn < 3; ++turn) {
        bluez().failNext("StopDiscovery", error::inProgress);
        bluez().at(bench.now() + 1100ms, [this] { bluez().failNext("StopDiscovery", error::failed); });
        bench.session.want(false);
        bench.pass(2s);
        bench.session.want(true);
        bench.pass(3s);
    }
    EXPECT_GE(bluez().count("StopDiscovery"), 6);
    EXPECT_TRUE(std::none_of(bench.conditions.begin(), bench.conditions.end(),
                             [](const auto& told) { return told.why.find("dead") != std::string::npos; }));
}

TEST_F(SessionDeadScan, IsRecognisedAsSoonTheNextTime) {
    die();
    bench.pass(3s);
    bluez().startInKernel("hci0");
    bluez().stopInKernel("hci0");
    bench.pass(60s);
    ASSERT_EQ(why(), "");
    bluez().starve("hci0");
    bench.pass(Standstill::limit + 6s);
    EXPECT_TRUE(says(dead)) << why();
}

TEST_F(SessionDeadScan, IsTriedAgainEveryThirtySecondsAndNotEveryEightMinutes) {
    die();
    bench.pass(60s);
    const int before = bluez().count("StartDiscovery");
    bench.pass(600s);
    EXPECT_GE(bluez().count("StartDiscovery") - before, 18);
    EXPECT_LE(bluez().count("StartDiscovery") - before, 21);
}

TEST_F(SessionDeadScan, DoesNotCountTriesThatBeginNothing) {
    die();
    const int before = bench.restarts;
    bench.pass(600s);
    EXPECT_EQ(bench.restarts, before);
}

TEST_F(SessionDeadScan, IsNeverCalledWellThoughTheAdapterIsSwitchedOffAndOn) {
    die();
    const std::size_t before = bench.conditions.size();
    bluez().power("hci0", false);
    bench.pass(5s);
    bluez().power("hci0", true);
    bench.pass(100s);
    EXPECT_TRUE(says(dead)) << why();
    EXPECT_FALSE(wasEverWellSince(before));
}

TEST_F(SessionDeadScan, IsNeverCalledWellThoughTheScanIsStoppedAndStarted) {
    die();
    const std::size_t before = bench.conditions.size();
    bench.session.want(false);
    bench.pass(10s);
    bench.session.want(true);
    bench.pass(100s);
    EXPECT_TRUE(says(dead)) << why();
    EXPECT_FALSE(wasEverWellSince(before));
}

TEST_F(SessionDeadScan, IsOverWithTheFirstReportOfAnotherBluetoothd) {
    die();
    bluez().dongle(0).silent = true;
    bluez().killDaemon();
    bench.pass(2s);
    const std::size_t before = bench.conditions.size();
    bluez().startDaemon();
    bench.pass(2s);
    EXPECT_TRUE(says(unproven)) << why();
    EXPECT_FALSE(wasEverWellSince(before)) << "before anything was heard";
    bluez().dongle(0).silent = false;
    bench.pass(1s);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionDeadScan, IsOverWhenTheAdapterIsPluggedInAgain) {
    die();
    bluez().unplug("hci0");
    bench.pass(2s);
    bluez().plug("hci0");
    EXPECT_GE(bench.reportsIn(2s), 9);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionDeadScan, IsOverWhenSomebodyElseMendsIt) {
    die();
    bench.pass(3s);
    bluez().startInKernel("hci0");
    bluez().stopInKernel("hci0");
    EXPECT_GE(bench.reportsIn(35s), 1);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionDeadScan, AsksTheKernelNothingAgainThatItMayNotAsk) {
    die();
    bench.pass(600s);
    EXPECT_TRUE(bench.mgmt.commands.empty());
    EXPECT_EQ(bench.mgmt.opened, 1);
}

/// The same, with CAP_NET_ADMIN.
class SessionThatMends : public BluezSessionTest {
protected:
    SessionThatMends() {
        bench.mgmt.privileged = true;
        scan();
        bench.pass(20s);
    }
    [[nodiscard]] bool wasTold(std::string_view words) const {
        return std::any_of(bench.conditions.begin(), bench.conditions.end(),
                           [&](const RadioCondition& told) { return told.why.find(words) != std::string::npos; });
    }
};

TEST_F(SessionThatMends, HearsAgainWithinTwoSecondsOfTheEndOfTheRound) {
    bluez().starve("hci0");
    bench.pass(1500ms);
    EXPECT_GE(bench.reportsIn(500ms), 4);
    EXPECT_TRUE(wasTold(dead));
    EXPECT_EQ(why(), "");
    EXPECT_EQ(bench.restarts, 1);
    EXPECT_EQ(bluez().count("StopDiscovery"), 0);
}

TEST_F(SessionThatMends, GoesOnTryingWhileBluetoothdHangs) {
    bluez().hang(true);
    bluez().starve("hci0");
    bench.pass(20s);
    EXPECT_TRUE(says(dead)) << why();
    EXPECT_FALSE(says("CAP_NET_ADMIN")) << why();
    EXPECT_LE(bench.mgmt.commands.size(), 24U) << "two every two seconds";
    bluez().hang(false);
    bench.pass(2500ms);
    EXPECT_GE(bench.reportsIn(500ms), 4);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionThatMends, DoesNotCallItWellBeforeAReportWasHeard) {
    bluez().dongle(0).silent = true;
    bluez().starve("hci0");
    bench.pass(5s);
    EXPECT_TRUE(says(unproven)) << why();
    bluez().dongle(0).silent = false;
    bench.pass(1s);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionThatMends, LeavesAScanAloneThatRunsInQuietAir) {
    bluez().deafen(true);
    bench.pass(3600s);
    EXPECT_TRUE(bench.mgmt.commands.empty());
    EXPECT_FALSE(wasTold(dead));
}

TEST_F(SessionThatMends, LeavesABluetoothdAloneThatConnectsToADevice) {
    bench.session.want(false);
    bench.pass(5s);
    bench.session.want(true);
    bench.pass(3s);  // the round is young
    bluez().starve("hci0");
    bench.pass(KernelScan::connectPause - 100ms);
    EXPECT_TRUE(bench.mgmt.commands.empty());
    bench.pass(1s);
    EXPECT_FALSE(bench.mgmt.commands.empty());
}

TEST_F(SessionThatMends, MendsAScanThatWasDeadBeforeItBegan) {
    bench.session.want(false);
    bench.pass(5s);
    bluez().discoverForAnother("hci0");
    bluez().starve("hci0");
    bench.session.want(true);
    bench.pass(2500ms);
    EXPECT_GE(bench.reportsIn(500ms), 4);
}

TEST_F(SessionThatMends, AsksNowAndThenWhereAnotherClientsScanRunsInQuietAir) {
    bench.session.want(false);
    bench.pass(5s);
    bluez().deafen(true);
    bluez().discoverForAnother("hci0");
    bench.session.want(true);
    bench.pass(25s);
    EXPECT_EQ(bench.mgmt.commands, (std::vector<std::uint16_t>{0x23, 0x23})) << "which the kernel refuses: it runs";
    EXPECT_FALSE(wasTold(dead));
}

TEST_F(SessionThatMends, AsksNothingWhereAnotherClientsScanWasHeard) {
    bench.session.want(false);
    bench.pass(5s);
    bluez().discoverForAnother("hci0");
    bench.session.want(true);
    bench.pass(10s);
    bluez().deafen(true);
    bench.pass(25s);
    EXPECT_TRUE(bench.mgmt.commands.empty());
}

TEST_F(SessionThatMends, EndsNoRoundOfAnotherClientOfTheNewBluetoothd) {
    bluez().killDaemon();
    bluez().startDaemon();
    bluez().failAlways("StartDiscovery", error::inProgress);
    bluez().discoverForAnother("hci0");
    bluez().blink("hci0", 0s);  // it discovers, it says
    bench.pass(10s);
    EXPECT_GE(bluez().count("StartDiscovery"), 2);
    EXPECT_EQ(std::count(bench.mgmt.commands.begin(), bench.mgmt.commands.end(), 0x24), 0);
}

TEST_F(SessionThatMends, EndsTheRoundOfABluetoothdThatDied) {
    bluez().leaveRounds(10s);
    bluez().killDaemon();
    bluez().startDaemon();
    bench.pass(500ms);
    EXPECT_GE(bench.reportsIn(500ms), 4);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionThatMends, EndsNoRoundWhereBluetoothdHasBeenThereForLong) {
    bench.session.want(false);
    bench.pass(5s);
    bluez().failAlways("StartDiscovery", error::inProgress);
    bench.session.want(true);
    bench.pass(20s);
    EXPECT_TRUE(bench.mgmt.commands.empty() || bench.mgmt.commands.front() != 0x24);
}

TEST_F(SessionThatMends, HoldsNoSocketWhileNoScanIsWanted) {
    EXPECT_TRUE(bench.mgmt.descriptor() >= 0);
    bench.session.want(false);
    bench.pass(5s);
    EXPECT_EQ(bench.mgmt.descriptor(), -1);
}

TEST(SessionThatMendsWithMonitors, LeavesAloneWhatIsHeardWithoutADiscovery) {
    BluezBench bench;
    bench.mgmt.privileged = true;
    bench.bluez.plug("hci0", true, true);
    bench.bluez.place({});
    bench.session.want(true);
    bench.pass(20s);
    bench.bluez.starve("hci0");
    EXPECT_GE(bench.reportsIn(60s), 590);
    EXPECT_TRUE(bench.mgmt.commands.empty());
    EXPECT_EQ(bench.session.why(), "");
}

TEST_F(BluezSessionTest, WaitsForTheRoundOfADeadBluetoothdWithoutTheCapability) {
    scan();
    bluez().leaveRounds(9s);
    bluez().killDaemon();
    bluez().startDaemon();
    EXPECT_EQ(bench.reportsIn(8900ms), 0);
    EXPECT_TRUE(says("the scan cannot be started")) << why();
    bench.pass(3s);
    EXPECT_GE(bench.reportsIn(1s), 9);
}

}  // namespace

}  // namespace nearcast::bluez
