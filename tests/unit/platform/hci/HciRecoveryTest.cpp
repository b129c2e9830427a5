// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/hci/HciSessionFixture.h"

#include <cerrno>

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

/// What a session does when its way to the controller is lost, or was never there.
using HciRecovery = HciSessionFixture;

TEST_F(HciRecovery, ScansAgainOnAnAdapterThatIsBack) {
    scan();
    advertiseFor(1s);
    machine.unplug();
    settle();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    pass(60s);
    machine.plug();
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, TellsTheLossBeforeItsCause) {
    scan();
    advertiseFor(1s);
    conditions.clear();
    machine.unplug();
    settle();
    ASSERT_EQ(conditions.size(), 2U);
    EXPECT_EQ(conditions[0].state, CBManagerStateResetting);
    EXPECT_NE(conditions[0].why.find("hci0 is lost: Broken pipe"), std::string::npos);
    EXPECT_EQ(conditions[1].state, CBManagerStateUnsupported);
}

TEST_F(HciRecovery, IsResettingWhileTheAdapterComesBack) {
    machine.unplug();
    settle();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    machine.plug();
    machine.controller([](FakeController& controller) { controller.mute = true; });
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("hci0 is being started"));
}

TEST_F(HciRecovery, TriesAtOnceAndThenLessOften) {
    machine.unplug();
    settle();
    Time last = now;
    for (const auto wait : {250ms, 500ms, 1000ms, 1000ms}) {
        EXPECT_EQ(session.due(), last + wait);
        last = *session.due();
        pass(wait);
    }
}

TEST_F(HciRecovery, NoticesAnAdapterWhoseSocketDoesNotTellThatItIsGone) {
    scan();
    machine.failNextQuestion(ENODEV);
    pass(HciSession::askInterval - 1ns);
    EXPECT_EQ(conditions.size(), 1U);
    pass(1ns);
    EXPECT_EQ(conditions[1].state, CBManagerStateUnsupported);
    pass(1s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(HciRecovery, DoesNotGiveTheAdapterUpWhenItCannotBeAsked) {
    scan();
    machine.failNextQuestion(EMFILE);
    pass(2s);
    EXPECT_EQ(machine.opens(), 1);
    EXPECT_EQ(conditions.size(), 1U);
}

TEST_F(HciRecovery, WaitsForAnotherProgramToLeaveTheAdapter) {
    machine.use(true);
    scan();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(says("systemctl disable --now bluetooth"));
    pass(60s);
    machine.use(false);
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, WaitsForABlockToBeLifted) {
    machine.block({.soft = true});
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    EXPECT_TRUE(says("rfkill unblock bluetooth"));
    EXPECT_EQ(machine.opens(), 0);
    pass(60s);
    machine.block({});
    pass(HciSession::longestPause);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, TellsWhatIsMissingWithoutCapabilities) {
    machine.allow({});
    scan();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(says("CAP_NET_ADMIN"));
    EXPECT_TRUE(says("setcap"));
}

TEST_F(HciRecovery, TellsAnErrorThatItDoesNotKnowAndGoesOn) {
    machine.failNextOpen(EIO);
    scan();
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("Input/output error"));
    pass(250ms);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, StartsAControllerAgainThatDoesNotAnswer) {
    scan();
    advertiseFor(1s);
    machine.controller([](FakeController& controller) { controller.mute = true; });
    scan(false);
    pass(HciSession::linger + HciController::answerLimit);
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("hci0 did not answer command 0x200C; it is started again"));
    scan();
    pass(60s);
    EXPECT_EQ(state(), CBManagerStateResetting);
    machine.controller([](FakeController& controller) { controller.mute = false; });
    pass(HciController::answerLimit + HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, StartsAControllerAgainAfterAHardwareError) {
    scan();
    advertiseFor(1s);
    machine.send(hex("04 10 01 42"));
    settle();
    EXPECT_EQ(machine.opens(), 2);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, DoesNotHurryWhereEveryStartEndsTheSameWay) {
    for (int second = 0; second < 60; ++second) {
        machine.controller([](FakeController& controller) { controller.failNext(leSetScanEnable, 0x1F); });
        scan();
        pass(1s);
    }
    EXPECT_LE(machine.opens(), 65);
}

TEST_F(HciRecovery, LeavesAControllerAloneThatIsOfNoUse) {
    machine.controller([](FakeController& controller) { controller.lowEnergy = false; });
    scan();
    pass(60s);
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    EXPECT_TRUE(says("without Bluetooth Low Energy"));
    EXPECT_EQ(machine.opens(), 1);
    machine.unplug();
    pass(2s);
    machine.controller([](FakeController& controller) { controller.lowEnergy = true; });
    machine.plug();
    pass(2s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(HciRecovery, DoesNotJoinPiecesFromBeforeALossToThoseAfterIt) {
    machine.controller([](FakeController& controller) { controller.extended = true; });
    scan();
    machine.send(hex("04") + extendedEvent({{.type = 0x20, .data = hex("05 09 51 58")}}));
    settle();
    machine.breakSockets(EPIPE);
    settle();
    pass(1s);
    machine.send(hex("04") + extendedEvent({{.type = 0x00, .data = hex("03 09 30 31")}}));
    settle();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].name, "01");
}

TEST_F(HciRecovery, SurvivesAWriteThatFails) {
    machine.failWrites(ENETDOWN);
    scan();
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("took no command 0x0C03"));
    machine.failWrites(0);
    pass(2s);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciRecovery, StartsTheControllerAgainWhenTheMachineHasSlept) {
    scan();
    advertiseFor(1s);
    machine.controller([](FakeController& controller) { controller.reset(); });  // it lost its power meanwhile
    now += HciSession::longestGap + 1ns;
    settle();
    EXPECT_TRUE(machine.scans());
    EXPECT_EQ(restarts, 1);
    EXPECT_EQ(machine.opens(), 1);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(HciRecovery, DoesNotTakeAShortDelayForASleep) {
    scan();
    now += HciSession::longestGap;
    settle();
    EXPECT_EQ(machine.count(reset), 1);
    EXPECT_EQ(restarts, 0);
}

}  // namespace

}  // namespace nearcast::hci
