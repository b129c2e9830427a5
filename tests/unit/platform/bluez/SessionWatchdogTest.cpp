// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class SessionWatchdog : public BluezSessionTest {
protected:
    SessionWatchdog() { scan(); }

    /// The last report has just come, and no other one will.
    void fallSilent() {
        while (bench.reportsIn(1ms) == 0) {
        }
        bluez().deafen(true);
    }
};

TEST_F(SessionWatchdog, MendsADiscoveryThatHasStalled) {
    bluez().stall();
    bench.pass(31s);
    EXPECT_GE(bench.reportsIn(1s), 9);
    EXPECT_EQ(bench.restarts, 1);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionWatchdog, WaitsThirtySecondsAndNoLonger) {
    fallSilent();
    bench.pass(30s - 1ms);
    EXPECT_EQ(bluez().count("StopDiscovery"), 0);
    bench.pass(2ms);
    EXPECT_EQ(bluez().count("StopDiscovery"), 1);
}

TEST_F(SessionWatchdog, LeavesADiscoveryAloneThatHearsSomethingNowAndThen) {
    bluez().dongle(0).interval = 29s;
    bench.pass(600s);
    EXPECT_EQ(bench.restarts, 0);
}

TEST_F(SessionWatchdog, SaysThatTheAirIsQuietOrTheRadioBlind) {
    fallSilent();
    bench.pass(29s);
    EXPECT_EQ(why(), "");
    bench.pass(2s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(says("quiet air or a blind radio")) << why();
}

TEST_F(SessionWatchdog, TakesItBackWhenSomethingIsHeard) {
    fallSilent();
    bench.pass(200s);
    bluez().deafen(false);
    bench.settle();
    EXPECT_EQ(why(), "");
}

TEST_F(SessionWatchdog, RestartsLessAndLessOftenInQuietAir) {
    fallSilent();
    bench.pass(3600s);
    // After 30, 60, 120, 240 and then every 480 seconds: 10 in an hour.
    EXPECT_EQ(bench.restarts, 10);
}

TEST_F(SessionWatchdog, IsAsQuickAsEverAfterTheQuiet) {
    fallSilent();
    bench.pass(3600s);
    bluez().deafen(false);
    bench.settle();
    const int before = bench.restarts;
    bluez().stall();
    bench.pass(32s);
    EXPECT_EQ(bench.restarts, before + 1);
}

TEST_F(SessionWatchdog, DoesNotWatchWhatIsNotWanted) {
    bench.session.want(false);
    bench.pass(600s);
    EXPECT_EQ(bench.restarts, 0);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionWatchdog, SaysThatTheRadioIsBlindWhereTheAdapterNeverSaysThatItDiscovers) {
    fallSilent();
    bluez().denyDiscovering();
    bench.pass(30s + 500ms);
    EXPECT_TRUE(says("quiet air or a blind radio")) << why();
    bench.pass(1s);
    EXPECT_TRUE(says("bluetoothd says that it does not scan")) << why();
}

TEST_F(SessionWatchdog, DoesNotTakeTheEndOfARoundForBlindness) {
    fallSilent();
    bench.pass(31s);
    bluez().blink("hci0", 500ms);
    bench.pass(100ms);
    EXPECT_TRUE(says("quiet air or a blind radio")) << why();
}

TEST_F(SessionWatchdog, IsQuietAboutAnAdapterThatIsOff) {
    bluez().power("hci0", false);
    bench.pass(600s);
    EXPECT_EQ(bench.restarts, 0);
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
}

}  // namespace

}  // namespace nearcast::bluez
