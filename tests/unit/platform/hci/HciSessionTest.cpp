// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/hci/HciSessionFixture.h"

#include <cerrno>

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

using HciSessionTest = HciSessionFixture;

TEST_F(HciSessionTest, IsUnknownBeforeItsFirstRun) {
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_LE(session.due(), now);
}

TEST_F(HciSessionTest, StaysUnknownUntilTheControllerHasAnswered) {
    machine.controller([](FakeController& controller) { controller.mute = true; });
    settle();
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_TRUE(machine.opened());
}

TEST_F(HciSessionTest, IsPoweredOnWhenTheControllerIsReady) {
    settle();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_EQ(why(), "");
    EXPECT_EQ(conditions.size(), 1U);
    EXPECT_FALSE(machine.scans());
}

TEST_F(HciSessionTest, TellsWhatIsHeard) {
    scan();
    advertise({.data = hex("05 09 51 58 30 31  09 FF FFFF 020000000001 "), .RSSI = -61, .addressType = 1});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].address, alice);
    EXPECT_EQ(reports[0].addressType, 1);
    EXPECT_EQ(reports[0].name, "QX01");
    EXPECT_EQ(reports[0].manufacturerData, hex("FFFF 020000000001"));
    EXPECT_EQ(reports[0].RSSI, -61);
}

TEST_F(HciSessionTest, TellsEveryReportOfAnEvent) {
    scan();
    machine.send(hex("04") + legacyEvent({{.address = alice}, {.address = bob}, {.address = alice}}));
    settle();
    EXPECT_EQ(reports.size(), 3U);
}

TEST_F(HciSessionTest, TellsWhatPrecedesAMalformedStructure) {
    scan();
    advertise({.data = hex("05 09 51 58 30 31  1F FF FFFF")});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].name, "QX01");
    EXPECT_FALSE(reports[0].manufacturerData);
}

TEST_F(HciSessionTest, ScansOnAControllerWithExtendedCommands) {
    machine.controller([](FakeController& controller) { controller.extended = true; });
    scan();
    advertise();
    advertise();
    EXPECT_EQ(reports.size(), 2U);
}

TEST_F(HciSessionTest, PassesOverPacketsThatAreNoEvents) {
    scan();
    for (const char* packet : {"02 01 20 04 00 00 00 00 00", "04", "04 3E", "04 FF 00", "00"}) {
        machine.send(hex(packet));
        settle();
    }
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    advertise();
    EXPECT_EQ(reports.size(), 1U);
}

TEST_F(HciSessionTest, ReadsMoreThanOneRunTakes) {
    scan();
    for (int i = 0; i < 1000; ++i) machine.advertise({});
    settle();
    EXPECT_EQ(reports.size(), 1000U);
}

TEST_F(HciSessionTest, EndsTheScanThatIsNotWantedAnyMore) {
    scan();
    scan(false);
    pass(HciSession::linger - 1ns);
    EXPECT_TRUE(machine.scans());
    pass(1ns);
    EXPECT_FALSE(machine.scans());
}

TEST_F(HciSessionTest, LeavesAScanAloneThatIsBegunAgainAtOnce) {
    scan();
    const int before = machine.count(leSetScanEnable);
    scan(false);
    pass(HciSession::linger - 1ns);
    scan();
    pass(10s);
    EXPECT_EQ(machine.count(leSetScanEnable), before);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciSessionTest, GivesTheControllerBackWhenItEnds) {
    const FakeHci other;
    const auto port = other.port();
    SessionListener& listener = *this;
    auto shortLived = std::make_unique<HciSession>(*port, HciTarget{}, listener);
    shortLived->pass(now);
    EXPECT_TRUE(other.opened());
    shortLived.reset();
    EXPECT_FALSE(other.opened());
}

}  // namespace

}  // namespace nearcast::hci
