// SPDX-License-Identifier: Apache-2.0
// What bluetoothd signals, and what it calls at our monitor.
#include "SdBusFixture.h"

#include "support/Dongle.h"

namespace nearcast::bluez {

namespace {

class SdBusSignalsTest : public SdBusTest {
protected:
    SdBusSignalsTest() { connectToBluetoothd(); }

    template <class... Values>
    Lines afterProperties(const char* path, const char* types, Values... values) {
        system.signal(FakeSystemBus::bluetoothd, path, interface::properties, "PropertiesChanged", types, values...);
        settle();
        return told();
    }
    template <class... Values>
    Lines afterObjects(const char* member, const char* types, Values... values) {
        system.signal(FakeSystemBus::bluetoothd, "/", interface::objectManager, member, types, values...);
        settle();
        return told();
    }
    static std::string ofDevice(const char* before, const char* after) {
        return std::string(before) + " " + device + after;
    }
};

TEST_F(SdBusSignalsTest, TellsAReport) {
    EXPECT_EQ(afterProperties(device, "sa{sv}as", interface::device, 1, "RSSI", "n", -60, 0),
              Lines{ofDevice("changed", " -60")});
}

TEST_F(SdBusSignalsTest, TellsThatAReadingHasEnded) {
    EXPECT_EQ(afterProperties(device, "sa{sv}as", interface::device, 0, 2, "TxPower", "RSSI"),
              Lines{ofDevice("changed", " no reading")});
    EXPECT_EQ(afterProperties(device, "sa{sv}as", interface::device, 1, "Name", "s", "QX1", 1, "TxPower"),
              Lines{ofDevice("changed", " QX1")});
}

TEST_F(SdBusSignalsTest, TakesAReadingThatHasComeForGood) {
    EXPECT_EQ(afterProperties(device, "sa{sv}as", interface::device, 1, "RSSI", "n", -60, 1, "RSSI"),
              Lines{ofDevice("changed", " -60")});
}

TEST_F(SdBusSignalsTest, TellsAChangeOfTheAdapter) {
    EXPECT_EQ(afterProperties(adapter, "sa{sv}as", interface::adapter, 1, "Powered", "b", 0, 0),
              Lines{"changed /org/bluez/hci0 off"});
}

TEST_F(SdBusSignalsTest, PassesOverChangesOfOtherInterfaces) {
    EXPECT_EQ(afterProperties(device, "sa{sv}as", "org.bluez.Battery1", 1, "RSSI", "n", -60, 0), Lines{});
    EXPECT_EQ(afterProperties(device, "sa{sv}as", "", 1, "RSSI", "n", -60, 0), Lines{});
}

TEST_F(SdBusSignalsTest, PassesOverChangesThatAreNone) {
    EXPECT_EQ(afterProperties(device, ""), Lines{});
    EXPECT_EQ(afterProperties(device, "u", 7), Lines{});
    EXPECT_EQ(afterProperties(device, "s", interface::device), Lines{});
    EXPECT_EQ(afterProperties(device, "ss", interface::device, "RSSI"), Lines{});
    EXPECT_EQ(afterProperties(device, "sa{sv}s", interface::device, 1, "Name", "s", "QX1", "RSSI"), Lines{});
    EXPECT_EQ(afterProperties(adapter, "s", interface::adapter), Lines{});
    EXPECT_EQ(afterProperties(adapter, "ss", interface::adapter, "Powered"), Lines{});
    EXPECT_TRUE(system.connected());
    EXPECT_EQ(console.lines(), Lines{});
}

TEST_F(SdBusSignalsTest, TellsOfObjectsThatCome) {
    EXPECT_EQ(afterObjects("InterfacesAdded", "oa{sa{sv}}", adapter, 2, interface::adapter, 1, "Powered", "b", 1,
                           interface::monitorManager, 0),
              (Lines{"added /org/bluez/hci0 on", "monitors /org/bluez/hci0"}));
    EXPECT_EQ(afterObjects("InterfacesAdded", "oa{sa{sv}}", device, 1, interface::device, 1, "RSSI", "n", -60),
              Lines{ofDevice("added", " -60")});
}

TEST_F(SdBusSignalsTest, TellsOfObjectsThatGo) {
    EXPECT_EQ(afterObjects("InterfacesRemoved", "oas", device, 2, "org.bluez.Battery1", interface::device),
              Lines{ofDevice("device removed", "")});
    EXPECT_EQ(afterObjects("InterfacesRemoved", "oas", adapter, 1, interface::adapter),
              Lines{"adapter removed /org/bluez/hci0"});
}

TEST_F(SdBusSignalsTest, PassesOverOtherSignalsOfObjects) {
    EXPECT_EQ(afterObjects("InterfacesMoved", "oa{sa{sv}}", adapter, 1, interface::adapter, 0), Lines{});
    EXPECT_EQ(afterObjects("InterfacesMoved", "oas", adapter, 1, interface::adapter), Lines{});
}

TEST_F(SdBusSignalsTest, PassesOverObjectsThatAreNone) {
    EXPECT_EQ(afterObjects("InterfacesAdded", "s", "what"), Lines{});
    EXPECT_EQ(afterObjects("InterfacesAdded", "o", device), Lines{});
    EXPECT_EQ(afterObjects("InterfacesAdded", ""), Lines{});
    EXPECT_EQ(afterObjects("InterfacesRemoved", "o", device), Lines{});
    EXPECT_EQ(afterObjects("InterfacesRemoved", "s", "what"), Lines{});
    EXPECT_TRUE(system.connected());
}

TEST_F(SdBusSignalsTest, TellsThatBluetoothdHasReleasedTheMonitor) {
    system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1",
                "Release", "");
    settle();
    EXPECT_EQ(told(), Lines{"monitor released"});
    const MessagePointer reply = system.takeReply();
    ASSERT_TRUE(reply);
    EXPECT_FALSE(failureIn(sd_bus_message_get_error(reply.get())));
}

TEST_F(SdBusSignalsTest, LetsNobodyElseCallAtTheMonitor) {
    system.call(stranger, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1", "Release", "");
    system.call(stranger, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1", "Activate", "");
    for (const char* member : {"DeviceFound", "DeviceLost"}) {
        system.call(stranger, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1", member, "o", device);
    }
    settle();
    EXPECT_EQ(told(), Lines(4, "forged")) << "and no monitor is released";
    for (int calls = 0; calls < 4; ++calls) {
        const MessagePointer reply = system.takeReply();
        ASSERT_TRUE(reply);
        const auto failure = failureIn(sd_bus_message_get_error(reply.get()));
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->name, error::accessDenied);
    }
}

TEST_F(SdBusSignalsTest, LetsNobodyReleaseTheMonitorWhileBluetoothdDoesNotRun) {
    system.changeOwner(service, ":1.1", "");
    settle();
    EXPECT_EQ(told(), Lines{"bluetoothd is not there"});
    system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1",
                "Release", "");
    settle();
    EXPECT_EQ(told(), Lines{"forged"});
}

TEST_F(SdBusSignalsTest, ShowsAMonitorForWhatDonglesAdvertise) {
    system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors", interface::objectManager, "GetManagedObjects", "");
    settle();
    const MessagePointer reply = system.takeReply();
    ASSERT_TRUE(reply);
    sd_bus_message* const objects = reply.get();
    const char* path = "";
    ASSERT_GT(sd_bus_message_enter_container(objects, 'a', "{oa{sa{sv}}}"), 0);
    ASSERT_GT(sd_bus_message_enter_container(objects, 'e', "oa{sa{sv}}"), 0);
    ASSERT_GT(sd_bus_message_read_basic(objects, 'o', &path), 0);
    EXPECT_STREQ(path, "/org/nearcast/monitors/dongles");
}

TEST_F(SdBusSignalsTest, AsksBluetoothdToWatchForTheDonglesManufacturer) {
    const auto ask = [this](const char* property) {
        system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors/dongles", interface::properties, "Get", "ss",
                    "org.bluez.AdvertisementMonitor1", property);
        settle();
        return system.takeReply();
    };
    const MessagePointer type = ask("Type");
    const char* text = "";
    ASSERT_TRUE(type);
    ASSERT_GT(sd_bus_message_read(type.get(), "v", "s", &text), 0);
    EXPECT_STREQ(text, "or_patterns");
    const MessagePointer patterns = ask("Patterns");
    std::uint8_t start = 9, kind = 0, first = 0, second = 0;
    ASSERT_TRUE(patterns);
    ASSERT_GT(sd_bus_message_read(patterns.get(), "v", "a(yyay)", 1, &start, &kind, 2, &first, &second), 0);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(kind, 0xFF);
    EXPECT_EQ(first, dongle::payloadMark[0]);
    EXPECT_EQ(second, dongle::payloadMark[1]);
}

TEST_F(SdBusSignalsTest, LetsTheMonitorsFindingsBe) {
    for (const char* member : {"DeviceFound", "DeviceLost"}) {
        system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1",
                    member, "o", device);
    }
    system.call(FakeSystemBus::bluetoothd, "/org/nearcast/monitors/dongles", "org.bluez.AdvertisementMonitor1",
                "Activate", "");
    settle();
    EXPECT_EQ(told(), Lines{});
    while (const MessagePointer reply = system.takeReply()) {
        EXPECT_FALSE(failureIn(sd_bus_message_get_error(reply.get())));
    }
}

}  // namespace

}  // namespace nearcast::bluez
