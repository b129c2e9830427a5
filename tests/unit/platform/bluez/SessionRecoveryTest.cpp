// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class SessionRecovery : public BluezSessionTest {
protected:
    SessionRecovery() { scan(); }

    /// Whether the scan brings reports within three seconds, and does so because it was begun again.
    void expectRecovery() {
        bench.pass(2500ms);
        EXPECT_GE(bench.reportsIn(1s), 9);
        EXPECT_EQ(bench.restarts, 1);
        EXPECT_EQ(state(), CBManagerStatePoweredOn);
        EXPECT_EQ(why(), "");
    }
};

TEST_F(SessionRecovery, ScansAgainAfterPowerOffAndOn) {
    bluez().power("hci0", false);
    EXPECT_EQ(bench.reportsIn(20s), 0);
    bluez().power("hci0", true);
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainAfterAQuickPowerOffAndOn) {
    bluez().power("hci0", false);
    bluez().power("hci0", true);
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainWhenTheAdapterIsPluggedInAgain) {
    bluez().unplug("hci0");
    bench.pass(20s);
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    bluez().plug("hci0");
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainWhenABlockIsTakenAway) {
    bench.rfkill.block = Block::soft;
    bluez().power("hci0", false);
    bench.pass(20s);
    bench.rfkill.block = Block::none;
    bluez().power("hci0", true);
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainWhenBluetoothdIsBack) {
    bluez().killDaemon();
    bench.pass(60s);
    bluez().startDaemon();
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainWhenTheBusIsBack) {
    bluez().breakBus({"System.Error", "Connection reset by peer"});
    bench.pass(300s);
    EXPECT_EQ(state(), CBManagerStateUnknown);
    bluez().mendBus();
    expectRecovery();
}

TEST_F(SessionRecovery, TriesTheBusAgainWithPauses) {
    bluez().breakBus({"System.Error", "No such file or directory"});
    bench.pass(60s);
    EXPECT_GE(bluez().count("connect"), 25);
    EXPECT_LE(bluez().count("connect"), 40);
}

TEST_F(SessionRecovery, ScansAgainWhenAnotherClientHasEndedTheDiscovery) {
    bluez().loseDiscovery("hci0");
    expectRecovery();
}

TEST_F(SessionRecovery, ScansAgainThoughTheFirstTryFails) {
    bluez().power("hci0", false);
    bench.settle();
    bluez().failNext("SetDiscoveryFilter", error::notReady);
    bluez().failNext("StartDiscovery", error::inProgress);
    bluez().power("hci0", true);
    expectRecovery();
}

TEST_F(SessionRecovery, GoesOnWhenTheAdapterBlinks) {
    bluez().blink("hci0", Discovery::doubt - 1ns);
    bench.pass(5s);
    EXPECT_EQ(bench.restarts, 0);
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
}

TEST_F(SessionRecovery, StartsAgainWhenTheAdapterDoesNotDiscoverForLonger) {
    bluez().blink("hci0", Discovery::doubt + 1ns);
    bench.pass(5s);
    EXPECT_EQ(bench.restarts, 1);
}

TEST_F(SessionRecovery, ForgetsAWishThatEndsWhileTheAdapterIsAway) {
    bluez().power("hci0", false);
    bench.settle();
    bench.session.want(false);
    bench.pass(5s);
    bluez().power("hci0", true);
    bench.pass(5s);
    EXPECT_EQ(bluez().count("StartDiscovery"), 1);
}

TEST_F(SessionRecovery, TakesUpAWishThatComesWhileTheAdapterIsAway) {
    bench.session.want(false);
    bench.pass(5s);
    bluez().power("hci0", false);
    bench.settle();
    bench.session.want(true);
    bench.settle();
    bluez().power("hci0", true);
    EXPECT_GE(bench.reportsIn(2s), 18);
}

TEST_F(SessionRecovery, SurvivesABluetoothdThatDiesInTheMiddleOfACall) {
    bench.session.want(false);
    bench.pass(5s);
    bench.session.want(true);
    bench.pass(FakeBluez::latency / 2);
    bluez().killDaemon();
    bench.settle();
    bluez().startDaemon();
    EXPECT_GE(bench.reportsIn(2s), 18);
}

TEST_F(SessionRecovery, SurvivesABluetoothdThatStopsAnswering) {
    bluez().hang(true);
    bench.pass(120s);
    EXPECT_TRUE(says("the scan cannot be started")) << why();
    bluez().hang(false);
    bench.pass(13s);
    EXPECT_GE(bench.reportsIn(1s), 9);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionRecovery, KeepsUpThroughAHundredTroubles) {
    for (int trouble = 0; trouble < 100; ++trouble) {
        switch (trouble % 4) {
            case 0: bluez().power("hci0", false), bench.pass(7s), bluez().power("hci0", true); break;
            case 1: bluez().unplug("hci0"), bench.pass(7s), bluez().plug("hci0"); break;
            case 2: bluez().killDaemon(), bench.pass(7s), bluez().startDaemon(); break;
            default: bluez().loseDiscovery("hci0"); break;
        }
        bench.pass(2500ms);
        ASSERT_GE(bench.reportsIn(1s), 9) << "after trouble " << trouble;
    }
    EXPECT_EQ(bench.restarts, 100);
}

}  // namespace

}  // namespace nearcast::bluez
