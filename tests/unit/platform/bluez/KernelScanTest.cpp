// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/KernelScan.h"

#include "doubles/FakeMgmt.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;
using Outcome = KernelScan::Outcome;
using Commands = std::vector<std::uint16_t>;

constexpr std::uint16_t startDiscovery = 0x23;
constexpr std::uint16_t stopDiscovery = 0x24;

/// A client of bluetoothd that does nothing but hold a discovery.
class NoListener : public SystemBusListener {
public:
    void busLost(const Failure& /*failure*/) override {}
    void daemonChanged(bool /*there*/) override {}
    void adapterAdded(std::string_view /*path*/, const AdapterNews& /*news*/) override {}
    void adapterChanged(std::string_view /*path*/, const AdapterNews& /*news*/) override {}
    void adapterRemoved(std::string_view /*path*/) override {}
    void monitorsOffered(std::string_view /*adapter*/) override {}
    void deviceListed(std::string_view /*path*/, const DeviceNews& /*news*/) override {}
    void deviceAdded(std::string_view /*path*/, const DeviceNews& /*news*/) override {}
    void deviceChanged(std::string_view /*path*/, const DeviceNews& /*news*/) override {}
    void deviceRemoved(std::string_view /*path*/) override {}
    void monitorReleased() override {}
    void forged() override {}
};

class KernelScanTest : public testing::Test {
protected:
    KernelScanTest() {
        mgmt.privileged = true;
        EXPECT_FALSE(bluez.connect(client));
        kernel.watch(0);
    }

    void pass(Time duration) {
        for (const Time end = bluez.now() + duration; bluez.now() < end;) {
            bluez.runUntil(std::min(end, bluez.now() + 5ms));
            kernel.pass(bluez.now());
        }
    }
    void discover() {
        bluez.startDiscovery("/org/bluez/hci0", [](const auto&) {});
        pass(100ms);
    }
    std::optional<Outcome> after(void (KernelScan::*what)(KernelScan::Done), Time duration = 100ms) {
        std::optional<Outcome> outcome;
        (kernel.*what)([&](Outcome now) { outcome = now; });
        EXPECT_FALSE(outcome) << "never from inside";
        pass(duration);
        return outcome;
    }

    NoListener client;
    FakeBluez bluez;
    FakeMgmt mgmt{bluez};
    KernelScan kernel{mgmt};
};

TEST_F(KernelScanTest, FollowsTheDiscoveryOfBluetoothd) {
    EXPECT_EQ(kernel.runs(), std::nullopt);
    discover();
    EXPECT_EQ(kernel.runs(), true);
    bluez.stopDiscovery("/org/bluez/hci0", [](const auto&) {});
    pass(100ms);
    EXPECT_EQ(kernel.runs(), false);
}

TEST_F(KernelScanTest, MissesAWholeRoundThatIsNotRenewedASecondAfterItsEnd) {
    discover();
    pass(KernelScan::shortestRound);
    bluez.starve("hci0");
    pass(5ms);
    EXPECT_EQ(kernel.missedFrom(), bluez.now() + KernelScan::renewal);
}

TEST_F(KernelScanTest, GivesBluetoothdTimeToConnectWhereARoundEndsEarly) {
    discover();
    pass(KernelScan::shortestRound / 2);
    bluez.starve("hci0");
    pass(5ms);
    EXPECT_EQ(kernel.missedFrom(), bluez.now() + KernelScan::connectPause);
}

TEST_F(KernelScanTest, LooksAtItsOwnAdapterOnly) {
    bluez.plug("hci1");
    bluez.discoverForAnother("hci1");
    pass(100ms);
    EXPECT_EQ(kernel.runs(), std::nullopt);
}

TEST_F(KernelScanTest, RevivesADeadDiscovery) {
    discover();
    bluez.starve("hci0");
    pass(1s);
    EXPECT_EQ(after(&KernelScan::revive), Outcome::mended);
    EXPECT_EQ(mgmt.commands, (Commands{startDiscovery, stopDiscovery}));
    EXPECT_EQ(kernel.runs(), true) << "bluetoothd has begun it again";
}

TEST_F(KernelScanTest, RevivesItThoughTheNewsComeBeforeTheAnswer) {
    discover();
    bluez.starve("hci0");
    mgmt.eventFirst = true;
    EXPECT_EQ(after(&KernelScan::revive), Outcome::mended);
    EXPECT_EQ(mgmt.commands, (Commands{startDiscovery, stopDiscovery}));
}

TEST_F(KernelScanTest, DoesNotTakeItsOwnRoundForBluetoothds) {
    discover();
    bluez.hang(true);
    bluez.starve("hci0");
    pass(5ms);
    EXPECT_EQ(after(&KernelScan::revive), Outcome::mended);
    EXPECT_EQ(kernel.runs(), false);
    EXPECT_LE(kernel.missedFrom(), bluez.now() + KernelScan::renewal) << "a round of its own ends early";
}

TEST_F(KernelScanTest, TouchesNoDiscoveryThatRuns) {
    discover();
    EXPECT_EQ(after(&KernelScan::revive), Outcome::needless);
    EXPECT_EQ(mgmt.commands, Commands{startDiscovery});
    EXPECT_EQ(kernel.runs(), true);
}

TEST_F(KernelScanTest, PresumesThatABusyKernelDiscovers) {
    discover();
    kernel.watch(std::nullopt);
    kernel.watch(0);
    const Time asked = bluez.now();
    EXPECT_EQ(after(&KernelScan::revive), Outcome::needless);
    EXPECT_EQ(kernel.runs(), std::nullopt);
    EXPECT_GE(kernel.presumedUntil(), asked + KernelScan::presumption);
    bluez.starve("hci0");
    pass(5ms);
    EXPECT_EQ(kernel.presumedUntil(), Time(0));
}

TEST_F(KernelScanTest, EndsTheRoundOfADeadBluetoothd) {
    bluez.leaveRounds(10s);
    discover();
    bluez.killDaemon();
    pass(100ms);
    EXPECT_EQ(kernel.runs(), true);
    EXPECT_EQ(after(&KernelScan::release), Outcome::mended);
    EXPECT_EQ(kernel.runs(), false);
}

TEST_F(KernelScanTest, EndsOneThatLookedForClassicDevicesToo) {
    bluez.leaveRounds(10s);
    discover();
    bluez.killDaemon();
    mgmt.otherType = 7;
    EXPECT_EQ(after(&KernelScan::release), Outcome::mended);
    EXPECT_EQ(mgmt.commands, (Commands{stopDiscovery, stopDiscovery}));
}

TEST_F(KernelScanTest, FailsWhereTheRoundIsOfNoTypeThatItKnows) {
    discover();
    mgmt.otherType = 1;
    EXPECT_EQ(after(&KernelScan::release), Outcome::failed);
    EXPECT_EQ(mgmt.commands, (Commands{stopDiscovery, stopDiscovery}));
}

TEST_F(KernelScanTest, HasNothingToEndWhereNothingRuns) { EXPECT_EQ(after(&KernelScan::release), Outcome::needless); }

TEST_F(KernelScanTest, FailsWhereTheAdapterIsOff) {
    bluez.power("hci0", false);
    EXPECT_EQ(after(&KernelScan::revive), Outcome::failed);
}

TEST_F(KernelScanTest, IsShutForGoodWhereItMayNotSpeak) {
    mgmt.privileged = false;
    EXPECT_EQ(after(&KernelScan::revive), Outcome::forbidden);
    EXPECT_TRUE(kernel.forbidden());
    EXPECT_FALSE(kernel.usable());
    kernel.watch(std::nullopt);
    kernel.watch(0);
    EXPECT_EQ(mgmt.opened, 1);
}

TEST_F(KernelScanTest, KnowsAtOnceWhetherItMaySpeak) {
    pass(100ms);
    EXPECT_TRUE(kernel.usable());
    mgmt.privileged = false;
    kernel.watch(1);
    pass(100ms);
    EXPECT_TRUE(kernel.forbidden());
    EXPECT_TRUE(mgmt.commands.empty());
}

TEST_F(KernelScanTest, IsForbiddenWhereASandboxHasNoSuchSockets) {
    mgmt.openError = EAFNOSUPPORT;
    kernel.watch(1);
    EXPECT_TRUE(kernel.forbidden());
    EXPECT_FALSE(kernel.usable());
}

TEST_F(KernelScanTest, IsNotForbiddenWhereThereAreNoDescriptorsLeft) {
    mgmt.openError = EMFILE;
    kernel.watch(1);
    EXPECT_FALSE(kernel.forbidden());
    EXPECT_EQ(after(&KernelScan::revive, 2s), Outcome::failed);
    mgmt.openError = 0;
    kernel.watch(0);
    EXPECT_TRUE(kernel.usable());
}

TEST_F(KernelScanTest, WaitsASecondForAnAnswerAndNoLonger) {
    mgmt.mute = true;
    std::optional<Outcome> outcome;
    kernel.setTime(bluez.now());
    kernel.revive([&](Outcome now) { outcome = now; });
    EXPECT_EQ(kernel.due(), bluez.now() + KernelScan::answerLimit);
    pass(KernelScan::answerLimit - 1ns);
    EXPECT_FALSE(outcome);
    pass(1ns);
    EXPECT_EQ(outcome, Outcome::failed);
    EXPECT_FALSE(kernel.due());
}

TEST_F(KernelScanTest, IsShutWhereItsSocketBreaks) {
    std::optional<Outcome> outcome;
    mgmt.mute = true;
    kernel.revive([&](Outcome now) { outcome = now; });
    mgmt.receiveError = EPIPE;
    pass(5ms);
    EXPECT_EQ(outcome, Outcome::failed);
    EXPECT_FALSE(kernel.usable());
    EXPECT_FALSE(kernel.forbidden());
}

TEST_F(KernelScanTest, GivesUpWhatIsUnderWayForAnotherAdapter) {
    mgmt.mute = true;
    std::optional<Outcome> outcome;
    kernel.revive([&](Outcome now) { outcome = now; });
    kernel.watch(1);
    EXPECT_EQ(outcome, Outcome::failed);
    EXPECT_FALSE(kernel.due());
}

TEST_F(KernelScanTest, IgnoresAnswersThatItDidNotAskForAndWhatIsCutOff) {
    mgmt.mute = true;
    std::optional<Outcome> outcome;
    kernel.revive([&](Outcome now) { outcome = now; });
    for (const auto& message : std::vector<std::vector<std::uint8_t>>{{1, 0, 0, 0, 3, 0, 0x24, 0, 0},
                                                                      {1, 0, 1, 0, 3, 0, 0x23, 0, 0},
                                                                      {2, 0, 0, 0, 2, 0, 0x23, 0},
                                                                      {0x13, 0, 0, 0, 1, 0, 6},
                                                                      {1}}) {
        mgmt.tell(message);
    }
    pass(100ms);
    EXPECT_FALSE(outcome);
    EXPECT_EQ(kernel.runs(), std::nullopt);
    EXPECT_EQ(mgmt.commands, Commands{startDiscovery});
}

}  // namespace

}  // namespace nearcast::bluez
