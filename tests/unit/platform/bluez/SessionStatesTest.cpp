// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/bluez/BluezSessionFixture.h"

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class SessionStates : public BluezSessionTest {};

TEST_F(SessionStates, IsUnknownBeforeAnythingHasAnswered) {
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_EQ(why(), "bluetoothd has not answered yet");
}

TEST_F(SessionStates, IsPoweredOnWithAnAdapterThatIsOn) {
    bench.settle();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_EQ(why(), "");
}

TEST_F(SessionStates, TellsEachStateOnce) {
    bench.pass(60s);
    EXPECT_EQ(bench.conditions.size(), 1U);
}

TEST_F(SessionStates, IsUnknownWithoutASystemBus) {
    bluez().breakBus({"System.Error", "No such file or directory"});
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_TRUE(says("No such file or directory")) << why();
}

TEST_F(SessionStates, IsUnauthorizedWhereTheBusLetsNobodyIn) {
    bluez().breakBus({std::string(error::accessDenied), "Permission denied"});
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
}

TEST_F(SessionStates, IsUnknownWithoutBluetoothd) {
    bluez().killDaemon();
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_TRUE(says("bluetoothd does not run")) << why();
}

TEST_F(SessionStates, IsUnsupportedWithoutAnAdapter) {
    bluez().unplug("hci0");
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    EXPECT_TRUE(says("there is no Bluetooth adapter")) << why();
}

TEST_F(SessionStates, IsUnauthorizedWhereThePolicyForbidsToAsk) {
    bluez().failAlways("GetManagedObjects", error::accessDenied);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
}

TEST_F(SessionStates, IsUnauthorizedWhereThePolicyForbidsToScan) {
    bluez().failAlways("StartDiscovery", error::accessDenied);
    scan();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(says("scanning is not allowed")) << why();
}

TEST_F(SessionStates, ScansOnceThePolicyAllowsIt) {
    bluez().failAlways("StartDiscovery", error::accessDenied);
    scan();
    bluez().failAlways("StartDiscovery", "");
    bench.pass(3s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_GT(bench.reports, 0);
}

TEST_F(SessionStates, IsPoweredOffWhileTheAdapterIsSwitchedOff) {
    bench.settle();
    bluez().power("hci0", false);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    EXPECT_TRUE(says("hci0 is switched off")) << why();
}

TEST_F(SessionStates, TellsABlockFromAnAdapterThatIsSwitchedOff) {
    bench.settle();
    bench.rfkill.block = Block::soft;
    bluez().power("hci0", false);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    EXPECT_TRUE(says("rfkill unblock bluetooth")) << why();
}

TEST_F(SessionStates, SaysThatABlockIsOneOfTheMachine) {
    bench.settle();
    bench.rfkill.block = Block::hard;
    bluez().power("hci0", false);
    bench.settle();
    EXPECT_TRUE(says("a switch of the machine")) << why();
}

TEST_F(SessionStates, NoticesABlockThatComesLater) {
    bench.settle();
    bluez().power("hci0", false);
    bench.settle();
    bench.rfkill.block = Block::soft;
    bench.pass(BluezSession::switchInterval);
    EXPECT_TRUE(says("rfkill unblock bluetooth")) << why();
}

TEST_F(SessionStates, TakesBluezsWordForABlock) {
    bench.settle();
    bluez().power("hci0", false, PowerState::blocked);
    bench.settle();
    EXPECT_TRUE(says("rfkill unblock bluetooth")) << why();
}

TEST_F(SessionStates, IsResettingWhileAnAdapterIsBeingSwitched) {
    bench.settle();
    bluez().power("hci0", true, PowerState::turningOff);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateResetting);
    bluez().power("hci0", false, PowerState::off);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
    bluez().power("hci0", false, PowerState::turningOn);
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateResetting);
}

TEST_F(SessionStates, IsResettingWhileAnAdapterThatHasJustComeIsOff) {
    bluez().unplug("hci0");
    bench.settle();
    bluez().plug("hci0", false);
    bench.pass(BluezSession::settling - 1ns);
    EXPECT_EQ(state(), CBManagerStateResetting);
    EXPECT_TRUE(says("coming up")) << why();
    bench.pass(1ns);
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
}

TEST_F(SessionStates, IsPoweredOffAtOnceWhereTheAdapterWasOffFromTheStart) {
    bluez().power("hci0", false);
    bench.pass(100ms);
    EXPECT_EQ(state(), CBManagerStatePoweredOff);
}

TEST_F(SessionStates, IsResettingAfterBluetoothdHasCome) {
    bluez().killDaemon();
    bench.settle();
    bluez().power("hci0", false);
    bluez().startDaemon();
    bench.settle();
    EXPECT_EQ(state(), CBManagerStateResetting);
}

TEST_F(SessionStates, IsUnsupportedWhereTheAdapterWentWhileBluetoothdWasDead) {
    bench.settle();
    bluez().killDaemon();
    bench.settle();
    bluez().unplug("hci0");
    bluez().startDaemon();
    bench.pass(5s);
    EXPECT_EQ(state(), CBManagerStateUnsupported);
}

TEST_F(SessionStates, SaysThatBluetoothdDoesNotAnswer) {
    bluez().hang(true);
    bench.pass(12s);
    EXPECT_EQ(state(), CBManagerStateUnknown);
    EXPECT_TRUE(says("bluetoothd does not answer")) << why();
}

TEST_F(SessionStates, ComesBackWhenBluetoothdAnswersAgain) {
    bluez().hang(true);
    bench.pass(12s);
    bluez().hang(false);
    bench.pass(12s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST(SessionOfOneAdapter, IsUnsupportedWhereOnlyOthersAre) {
    BluezBench bench("hci7");
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStateUnsupported);
    EXPECT_EQ(bench.session.why(), "there is no adapter hci7 (there is: hci0)");
}

TEST(SessionOfOneAdapter, TakesItWhenItComes) {
    BluezBench bench("hci7");
    bench.settle();
    bench.bluez.plug("hci7");
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStatePoweredOn);
}

TEST(SessionOfOneAdapter, ScansOnNoOther) {
    BluezBench bench("hci7");
    bench.bluez.plug("hci7", false);
    bench.session.want(true);
    bench.pass(10s);
    EXPECT_FALSE(bench.bluez.discovers("hci0"));
    bench.bluez.power("hci7", true);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci7"));
    EXPECT_FALSE(bench.bluez.discovers("hci0"));
}

constexpr const char* first = "00:1A:7D:DA:71:10";
constexpr const char* second = "00:1A:7D:DA:71:11";

TEST(SessionOfOneAddress, GoesOnWhenItsAdapterComesBackWithAnotherNumber) {
    BluezBench bench("00:1a:7d:da:71:11");
    bench.bluez.plugKnown("hci0", first);
    bench.bluez.plugKnown("hci1", second);
    bench.session.want(true);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci1"));
    bench.bluez.unplug("hci1");
    bench.bluez.unplug("hci0");
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStateUnsupported);
    bench.bluez.plugKnown("hci0", second);
    bench.bluez.plugKnown("hci1", first);
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStatePoweredOn);
    EXPECT_EQ(bench.session.why(), "");
    EXPECT_TRUE(bench.bluez.discovers("hci0"));
    EXPECT_FALSE(bench.bluez.discovers("hci1"));
}

TEST(SessionOfOneAddress, SaysWhichAddressesThereAre) {
    BluezBench bench(second);
    bench.bluez.plugKnown("hci0", first);
    bench.settle();
    EXPECT_EQ(bench.session.why(), std::string("there is no adapter ") + second + " (there is: hci0 " + first + ")");
}

TEST(SessionOfOneNumber, SaysWhichNumberItsAdapterHasNow) {
    BluezBench bench("hci1");
    bench.bluez.plugKnown("hci1", second);
    bench.settle();
    bench.bluez.unplug("hci0");
    bench.bluez.unplug("hci1");
    bench.bluez.plugKnown("hci0", second);
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStateUnsupported);
    EXPECT_EQ(bench.session.why(),
              "there is no adapter hci1 (there is: hci0); the one that was it is hci0 now "
              "(bluez:00:1A:7D:DA:71:11 follows it)");
    bench.bluez.plugKnown("hci1", first);
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStatePoweredOn);
    EXPECT_EQ(bench.session.why(),
              "hci1 is another adapter than before, which is hci0 now (bluez:00:1A:7D:DA:71:11 "
              "follows it)");
}

TEST(SessionOfOneNumber, RemembersItsAdapterOverARestartOfBluetoothd) {
    BluezBench bench("hci1");
    bench.bluez.plugKnown("hci1", second);
    bench.settle();
    bench.bluez.killDaemon();
    bench.bluez.unplug("hci1");
    bench.bluez.plugKnown("hci0", second);
    bench.bluez.startDaemon();
    bench.settle();
    EXPECT_NE(bench.session.why().find("the one that was it is hci0 now"), std::string::npos) << bench.session.why();
}

TEST(SessionOfAnyAdapter, TakesOneWithLowEnergyBeforeAClassicOne) {
    BluezBench bench;
    bench.bluez.plugKnown("hci0", first, false);
    bench.bluez.plugKnown("hci1", second);
    bench.session.want(true);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci1"));
    EXPECT_FALSE(bench.bluez.discovers("hci0"));
}

TEST(SessionOfAnyAdapter, SaysThatAClassicOneCannotHear) {
    BluezBench bench;
    bench.bluez.plugKnown("hci0", first, false);
    bench.session.want(true);
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStateUnsupported);
    EXPECT_NE(bench.session.why().find("hci0 has no Bluetooth Low Energy"), std::string::npos) << bench.session.why();
    EXPECT_EQ(bench.bluez.count("StartDiscovery"), 0);
}

TEST(SessionOfAnyAdapter, PassesOnThatSomebodySpeaksInBluetoothdsName) {
    BluezBench bench;
    bench.settle();
    bench.bluez.forge();
    bench.bluez.forge();
    bench.settle();
    EXPECT_EQ(bench.forgeries, 2);
    EXPECT_EQ(bench.session.state(), CBManagerStatePoweredOn);
}

TEST(SessionOfAnyAdapter, TakesTheFirstThatIsPowered) {
    BluezBench bench;
    bench.bluez.power("hci0", false);
    bench.bluez.plug("hci1");
    bench.session.want(true);
    bench.settle();
    EXPECT_EQ(bench.session.state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(bench.bluez.discovers("hci1"));
}

TEST(SessionOfAnyAdapter, GoesOnWithAnotherWhenItsOwnGoesOff) {
    BluezBench bench;
    bench.bluez.plug("hci1");
    bench.session.want(true);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci0"));
    bench.bluez.power("hci0", false);
    bench.settle();
    EXPECT_TRUE(bench.bluez.discovers("hci1"));
}

}  // namespace

}  // namespace nearcast::bluez
