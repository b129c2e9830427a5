// SPDX-License-Identifier: Apache-2.0
// What others than bluetoothd send in its name, each to this connection alone, which no match rule keeps away.
#include "SdBusFixture.h"

namespace nearcast::bluez {

namespace {

class SdBusForgeryTest : public SdBusTest {
protected:
    void reportFrom(const char* sender) {
        system.signal(sender, device, interface::properties, "PropertiesChanged", "sa{sv}as", interface::device, 1,
                      "RSSI", "n", -30, 0);
    }
    void powerOffFrom(const char* sender) {
        system.signal(sender, adapter, interface::properties, "PropertiesChanged", "sa{sv}as", interface::adapter, 1,
                      "Powered", "b", 0, 0);
    }
    Lines settled() {
        settle();
        return told();
    }
    /// The bus says that the name of bluetoothd has another owner.
    void handOver(const char* before, const char* after) { system.changeOwner(service, before, after); }
};

TEST_F(SdBusForgeryTest, BelievesNobodyElsesReport) {
    connectToBluetoothd();
    reportFrom(stranger);
    EXPECT_EQ(settled(), Lines{"forged"});
}

TEST_F(SdBusForgeryTest, BelievesNobodyElseThatTheAdapterIsOff) {
    connectToBluetoothd();
    powerOffFrom(stranger);
    EXPECT_EQ(settled(), Lines{"forged"});
}

TEST_F(SdBusForgeryTest, BelievesNobodyElseThatObjectsComeOrGo) {
    connectToBluetoothd();
    system.signal(stranger, "/", interface::objectManager, "InterfacesAdded", "oa{sa{sv}}", device, 1,
                  interface::device, 1, "RSSI", "n", -30);
    EXPECT_EQ(settled(), Lines{"forged"});
    system.signal(stranger, "/", interface::objectManager, "InterfacesRemoved", "oas", adapter, 1, interface::adapter);
    EXPECT_EQ(settled(), Lines{"forged"});
}

TEST_F(SdBusForgeryTest, BelievesTheBusAloneThatTheOwnerHasChanged) {
    connectToBluetoothd();
    for (const char* sender : {stranger, FakeSystemBus::bluetoothd}) {
        system.signal(sender, driver::path, driver::name, "NameOwnerChanged", "sss", service, ":1.1", stranger);
        EXPECT_EQ(settled(), Lines{"forged"}) << sender;
    }
    reportFrom(stranger);
    EXPECT_EQ(settled(), Lines{"forged"});
    reportFrom(FakeSystemBus::bluetoothd);
    EXPECT_EQ(settled().size(), 1U);
}

TEST_F(SdBusForgeryTest, BelievesNobodyWhileBluetoothdDoesNotRun) {
    connect();
    ASSERT_EQ(told(), Lines{"bluetoothd is not there"});
    reportFrom(stranger);
    EXPECT_EQ(settled(), Lines{"forged"});
}

TEST_F(SdBusForgeryTest, BelievesTheNextOwnerFromTheChangeOnAndTheFormerOneNoLonger) {
    connectToBluetoothd();
    reportFrom(FakeSystemBus::bluetoothd);
    handOver(":1.1", ":1.2");
    reportFrom(":1.2");
    EXPECT_EQ(settled(), (Lines{std::string("changed ") + device + " -30", "bluetoothd is not there",
                                "bluetoothd is there", std::string("changed ") + device + " -30"}));
    reportFrom(FakeSystemBus::bluetoothd);
    EXPECT_EQ(settled(), Lines{"forged"});
}

TEST_F(SdBusForgeryTest, BelievesTheNextOwnerOnlyFromTheChangeOn) {
    connectToBluetoothd();
    reportFrom(":1.2");
    handOver(":1.1", ":1.2");
    EXPECT_EQ(settled(), (Lines{"forged", "bluetoothd is not there", "bluetoothd is there"}));
}

/// The greeting alone is answered, so that signals can come.
TEST_F(SdBusForgeryTest, PassesOverWhatComesBeforeTheOwnerIsKnownAndBlamesNobody) {
    system.ignore("GetNameOwner");
    connect();
    reportFrom(FakeSystemBus::bluetoothd);
    reportFrom(stranger);
    EXPECT_EQ(settled(), Lines{});
    handOver("", FakeSystemBus::bluetoothd);
    reportFrom(FakeSystemBus::bluetoothd);
    EXPECT_EQ(settled(), (Lines{"bluetoothd is there", std::string("changed ") + device + " -30"}));
    EXPECT_EQ(console.lines(), Lines{});
}

TEST_F(SdBusForgeryTest, IsToldOnceOfAConnectionOnTheConsole) {
    const std::string line =
        "Another program on the system bus, :1.66, speaks in bluetoothd's name: it is not listened to. 'busctl status "
        ":1.66' says which program it is.";
    connectToBluetoothd();
    reportFrom(stranger);
    powerOffFrom(stranger);
    reportFrom(":1.67");
    EXPECT_EQ(settled().size(), 3U) << "each is told to the listener";
    EXPECT_EQ(console.lines(), Lines{line});
    connect();
    ASSERT_EQ(told(), Lines{"bluetoothd is there"});
    reportFrom(stranger);
    settle();
    EXPECT_EQ(console.lines(), (Lines{line, line})) << "another connection";
}

TEST_F(SdBusForgeryTest, AsksNothingMoreOfTheBusToTellThemApart) {
    connectToBluetoothd();
    const std::size_t asked = system.asked().size();
    reportFrom(FakeSystemBus::bluetoothd);
    reportFrom(stranger);
    settle();
    EXPECT_EQ(system.asked().size(), asked);
}

}  // namespace

}  // namespace nearcast::bluez
