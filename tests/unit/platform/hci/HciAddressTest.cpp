// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/AdapterName.h"
#include "unit/platform/hci/HciSessionFixture.h"

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

HciAdapter other(int index, const DeviceAddress& address) {
    HciAdapter adapter;
    adapter.index = index;
    adapter.address = address;
    return adapter;
}

/// Plugs the controller out and in again, so that it comes back under another number.
void renumber(FakeHci& machine, int index) {
    machine.unplug();
    machine.number(index);
    machine.plug();
}

/// A session with a controller that is named by its address.
class HciByAddress : public HciSessionFixture {
protected:
    HciByAddress() : HciSessionFixture(HciTarget{.index = HciTarget::notFound, .address = alice, .byAddress = true}) {}
};

TEST_F(HciByAddress, FindsTheControllerAmongOthers) {
    renumber(machine, 3);
    machine.addOther(other(0, bob));
    scan();
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
}

TEST_F(HciByAddress, FindsTheControllerAgainUnderAnotherNumber) {
    scan();
    advertiseFor(1s);
    machine.unplug();
    settle();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    machine.addOther(other(0, bob));  // which was quicker
    machine.number(1);
    machine.plug();
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStatePoweredOn);
    EXPECT_TRUE(machine.scans());
    advertise();
    EXPECT_EQ(reports.size(), 11U);
}

TEST_F(HciByAddress, SaysWhichControllersThereAreWhereItIsMissing) {
    machine.unplug();
    machine.addOther(other(0, bob));
    machine.addOther(other(1, {}));
    scan();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    EXPECT_EQ(why(), "there is no controller with the address " + adapterAddressText(alice) +
                         ": plug it in; there is hci0 (" + adapterAddressText(bob) +
                         "), hci1 (its address is not known)");
}

TEST_F(HciByAddress, DoesNotGuessWhereSeveralHaveTheAddress) {
    machine.addOther(other(2, alice));
    scan();
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    EXPECT_TRUE(says("several controllers have the address A1:11:12:13:14:15: hci2 "));
    EXPECT_TRUE(says("name the one that is meant by its number, as in hci:0"));
    EXPECT_EQ(machine.opens(), 0);
}

TEST_F(HciByAddress, NamesTheControllerByBothWhereItIsInUse) {
    machine.use(true);
    scan();
    EXPECT_TRUE(says("hci0 (A1:11:12:13:14:15) is in use"));
    EXPECT_TRUE(says("hci:A1:11:12:13:14:15?beside"));
}

TEST_F(HciByAddress, IsStartedBeforeTheControllerIsFound) {
    EXPECT_EQ(why(), "the controller A1:11:12:13:14:15 is being started");
}

/// A session with a controller that is named by its number.
using HciByNumber = HciSessionFixture;

TEST_F(HciByNumber, SaysWhichNumberItsControllerHasNow) {
    scan();
    advertiseFor(1s);
    renumber(machine, 1);
    pass(HciSession::longestPause);
    EXPECT_EQ(state(), CBManagerStateUnsupported);
    EXPECT_EQ(
        why(),
        "there is no hci0: the controller that had this number is hci1 now; the radio hci:A1:11:12:13:14:15 finds "
        "it under every number");
}

TEST_F(HciByNumber, SaysNothingOfControllersThatNeverHadIt) {
    renumber(machine, 1);
    scan();
    EXPECT_EQ(why(), "there is no hci0: plug a Bluetooth adapter in");
}

TEST_F(HciByNumber, DoesNotTakeOneWithoutAnAddressForOneThatItNeverSaw) {
    machine.unplug();
    machine.addOther(other(1, {}));
    scan();
    EXPECT_EQ(why(), "there is no hci0: plug a Bluetooth adapter in");
}

}  // namespace

}  // namespace nearcast::hci
