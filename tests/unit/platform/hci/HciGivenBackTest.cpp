// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/hci/HciSessionFixture.h"

#include <cerrno>

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

/// A session with a controller that a Bluetooth service has switched off, and would switch on when it gets it back.
class HciGivenBack : public HciSessionFixture {
protected:
    HciGivenBack() { machine.runService(true); }
    /// The controller is lost and back, and the service is quicker.
    void loseToService() {
        machine.unplug();
        settle();
        machine.plug();
        machine.serve();
        pass(HciSession::longestPause);
    }
};

TEST_F(HciGivenBack, IsSwitchedOffAgainAtItsRelease) {
    scan();
    EXPECT_TRUE(session.owesRest());
    session.release();
    EXPECT_FALSE(machine.opened());
    EXPECT_FALSE(machine.up());
    EXPECT_FALSE(session.owesRest());
    machine.serve();
    EXPECT_FALSE(machine.up()) << "the service has had its turn";
}

TEST_F(HciGivenBack, IsLeftToTheServiceWhereThatDoesNotSwitchItOn) {
    machine.runService(false);
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_FALSE(session.owesRest());
}

TEST_F(HciGivenBack, StaysOnWhereSomebodyUsesItAtItsRelease) {
    scan();
    machine.discover(true);
    session.release();
    EXPECT_TRUE(machine.up());
}

TEST_F(HciGivenBack, IsTakenBackFromTheServiceThatWasQuicker) {
    scan();
    loseToService();
    const RadioCondition told{CBManagerStateResetting,
                              "hci0 was switched on by the Bluetooth service, as it does by itself; it is taken back"};
    EXPECT_NE(std::find(conditions.begin(), conditions.end(), told), conditions.end());
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciGivenBack, IsNotTakenFromDevicesThatAreConnectedByIt) {
    scan();
    machine.link(true);
    loseToService();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(machine.up());
    machine.link(false);
    pass(2 * HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
}

TEST_F(HciGivenBack, IsNotTakenFromProgramsThatDiscoverByIt) {
    scan();
    machine.discover(true);
    loseToService();
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(machine.up());
}

TEST_F(HciGivenBack, WasNotOursWhereTheServiceHadItOn) {
    machine.use(true);
    scan();
    pass(10s);
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
    EXPECT_TRUE(machine.up());
    EXPECT_EQ(machine.serviceAsked(), 0);
    EXPECT_FALSE(session.owesRest());
}

/// The service has it off because it is switching it on right now.
TEST_F(HciGivenBack, WasNotOursWhereItCouldNotBeTaken) {
    machine.failNextOpen(EBUSY);
    settle();
    EXPECT_FALSE(session.owesRest());
    machine.use(true);
    pass(10s);
    EXPECT_TRUE(machine.up());
    EXPECT_EQ(state(), CBManagerStateUnauthorized);
}

TEST_F(HciGivenBack, IsNotTakenWhileTheKernelSetsItUp) {
    scan();
    machine.failNextOpen(EBUSY);
    machine.breakSockets(EPIPE);
    settle();
    pass(HciSession::longestPause);
    const RadioCondition told{CBManagerStateResetting, "hci0 is being set up by the kernel"};
    EXPECT_NE(std::find(conditions.begin(), conditions.end(), told), conditions.end());
}

TEST_F(HciGivenBack, IsLeftToTheServiceWhereItWasLostBeforeTheRelease) {
    scan();
    machine.unplug();
    settle();
    machine.plug();
    machine.serve();
    session.release();
    EXPECT_TRUE(machine.up());
}

TEST_F(HciGivenBack, IsAskedForOnlyUntilItIsKnown) {
    scan();
    for (int i = 0; i < 3; ++i) {
        machine.breakSockets(EPIPE);
        pass(10s);
    }
    EXPECT_EQ(machine.opens(), 4);
    EXPECT_EQ(machine.serviceAsked(), 1);
}

TEST_F(HciGivenBack, OwesNothingBeforeItIsTaken) {
    machine.unplug();
    settle();
    session.release();
    EXPECT_FALSE(session.owesRest());
    machine.plug();
    machine.serve();
    EXPECT_TRUE(machine.up());
}

/// Nothing is taken, so nothing is given back.
class HciBesideAService : public HciSessionFixture {
protected:
    HciBesideAService() : HciSessionFixture(HciAccess::beside) { machine.runService(true); }
};

TEST_F(HciBesideAService, NeverAsksItForTheController) {
    settle();
    machine.use(true);
    pass(10s);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_EQ(machine.serviceAsked(), 0);
    session.release();
    EXPECT_TRUE(machine.up());
}

}  // namespace

}  // namespace nearcast::hci
