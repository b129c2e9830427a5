// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/hci/HciSessionFixture.h"

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

/// A session that listens beside another program, which has the adapter up and scans.
class HciBeside : public HciSessionFixture {
protected:
    HciBeside() : HciSessionFixture(HciAccess::beside) {
        machine.use(true);
        machine.othersScan(true);
    }
};

TEST_F(HciBeside, HearsWhatOthersScansBringIn) {
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    advertise();
    advertise();
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(HciBeside, NeverSendsACommand) {
    scan();
    advertise();
    pass(10min);
    scan(false);
    pass(1s);
    machine.controller([](FakeController& controller) { EXPECT_TRUE(controller.commands().empty()); });
}

TEST_F(HciBeside, TellsNothingWithoutAScan) {
    settle();
    advertise();
    EXPECT_TRUE(reports.empty());
}

TEST_F(HciBeside, RemembersWhatASenderSaysInItsScanResponses) {
    scan();
    advertise({.type = 4, .data = hex("05 09 51 58 30 31")});
    advertise({.data = hex("02 01 06")});
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_TRUE(reports[0].scanResponse);
    EXPECT_EQ(reports[1].name, "QX01");
}

TEST_F(HciBeside, IsPoweredOffWhileTheAdapterIsDown) {
    machine.use(false);
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    EXPECT_TRUE(says("bluetoothctl power on"));
    machine.use(true);
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    advertise();
    EXPECT_EQ(reports.size(), 1U);
}

TEST_F(HciBeside, NoticesThatTheAdapterGoesDown) {
    scan();
    machine.use(false);
    pass(HciSession::askInterval);
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
}

TEST_F(HciBeside, NoticesABlock) {
    scan();
    machine.block({.soft = true});
    pass(HciSession::askInterval);
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    EXPECT_TRUE(says("rfkill unblock bluetooth"));
    machine.block({});
    machine.use(true);
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(HciBeside, SaysThatASocketWithoutTheCapabilityIsSilent) {
    machine.allow({.netAdmin = true, .netRaw = false});
    scan();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(says("CAP_NET_RAW"));
}

TEST_F(HciBeside, SaysWhenPerhapsNobodyScans) {
    machine.othersScan(false);
    scan();
    pass(30s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(says("no other program scans"));
    EXPECT_EQ(restarts, 0);
    machine.othersScan(true);
    advertise();
    EXPECT_EQ(why(), "");
}

TEST_F(HciBeside, ListensAgainToAnAdapterThatIsBack) {
    scan();
    advertise();
    machine.unplug();
    settle();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    machine.plug();
    machine.use(true);
    pass(HciSession::longestPause);
    advertise();
    EXPECT_EQ(reports.size(), 2U);
}

}  // namespace

}  // namespace nearcast::hci
