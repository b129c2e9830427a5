// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/hci/HciSessionFixture.h"

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

/// What a session does when a scan brings nothing.
class HciQuiet : public HciSessionFixture {
protected:
    void die() {
        machine.controller([](FakeController& controller) { controller.mute = true; });
    }
};

TEST_F(HciQuiet, BeginsTheScanAgainAfterThirtySeconds) {
    scan();
    const int before = machine.count(leSetScanEnable);
    pass(30s - 1ns);
    EXPECT_EQ(restarts, 0);
    EXPECT_EQ(why(), "");
    pass(1ns);
    EXPECT_EQ(restarts, 1);
    EXPECT_EQ(machine.count(leSetScanEnable), before + 2);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(says("although the controller answers"));
}

TEST_F(HciQuiet, StartsTheWholeControllerAgainWhereThatDidNotHelp) {
    scan();
    pass(30s);
    EXPECT_EQ(machine.count(reset), 1);
    pass(60s);
    EXPECT_EQ(machine.count(reset), 2);
    EXPECT_EQ(restarts, 2);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciQuiet, DisturbsAnEmptyAirLessAndLessOften) {
    scan();
    pass(1h);
    EXPECT_LE(restarts, 4 + 60 / 8);
    EXPECT_GE(restarts, 4);
    EXPECT_EQ(machine.opens(), 1);
}

TEST_F(HciQuiet, EndsWithTheFirstReport) {
    scan();
    pass(30s);
    advertise();
    EXPECT_EQ(why(), "");
    EXPECT_EQ(reports.size(), 1U);
    pass(30s - 1ns);
    EXPECT_EQ(restarts, 1);
    pass(1ns);
    EXPECT_EQ(restarts, 2);
    EXPECT_EQ(machine.count(reset), 1);
}

TEST_F(HciQuiet, IsNotNoticedWithoutAScan) {
    settle();
    pass(10min);
    EXPECT_EQ(restarts, 0);
    EXPECT_EQ(why(), "");
}

TEST_F(HciQuiet, ShowsADeadController) {
    scan();
    advertiseFor(1s);
    die();
    pass(HciSession::probeAfter + HciController::answerLimit - 1ns);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    pass(1ns);
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("hci0 did not answer command 0x1001; it is started again"));
}

TEST_F(HciQuiet, ShowsADeadControllerWithoutAScanToo) {
    settle();
    die();
    pass(HciSession::probeAfter + HciController::answerLimit);
    EXPECT_EQ(state(), CBManagerStateResetting);
}

TEST_F(HciQuiet, ShowsWithinTenSecondsThatTheControllerIsDead) {
    EXPECT_LE(HciSession::probeAfter + HciController::answerLimit, 10s);
}

TEST_F(HciQuiet, HasTheControllerAskedWhetherItLives) {
    scan();
    pass(HciSession::probeAfter - 1ns);
    EXPECT_EQ(machine.count(readLocalVersion), 0);
    pass(1ns);
    EXPECT_EQ(machine.count(readLocalVersion), 1);
    pass(HciSession::probeAfter - 1ns);
    EXPECT_EQ(machine.count(readLocalVersion), 1);
    pass(1ns);
    EXPECT_EQ(machine.count(readLocalVersion), 2);
}

TEST_F(HciQuiet, OfAControllerThatLivesDisturbsNeitherItsScanNorTheApplication) {
    scan();
    conditions.clear();
    const int enables = machine.count(leSetScanEnable);
    pass(QuietWatch::firstLimit - 1ns);
    EXPECT_EQ(machine.count(leSetScanEnable), enables);
    EXPECT_EQ(machine.count(reset), 1);
    EXPECT_EQ(restarts, 0);
    EXPECT_TRUE(conditions.empty());
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciQuiet, EndsForTheControllerWithAnyReport) {
    scan();
    for (int i = 0; i < 10; ++i) {
        pass(HciSession::probeAfter - 1ns);
        advertise();
    }
    EXPECT_EQ(machine.count(readLocalVersion), 0);
}

TEST_F(HciQuiet, IsNoDeathWhereTheControllerRefusesTheQuestion) {
    scan();
    machine.controller([](FakeController& controller) { controller.failNext(readLocalVersion, 0x01); });
    pass(HciSession::probeAfter + HciController::answerLimit);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_EQ(machine.opens(), 1);
}

TEST_F(HciQuiet, IsNotToldBesideTheEndOfAScan) {
    scan();
    pass(30s);
    EXPECT_NE(why(), "");
    scan(false);
    pass(1s);
    EXPECT_EQ(why(), "");
}

}  // namespace

}  // namespace nearcast::hci
