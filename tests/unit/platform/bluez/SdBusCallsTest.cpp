// SPDX-License-Identifier: Apache-2.0
// What is called at bluetoothd, and how the calls end.
#include "SdBusFixture.h"

#include <chrono>
#include <memory>
#include <stdexcept>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

struct Called {
    const char* what;
    std::function<void(SdBus& bus, Done done)> call;
    const char* path;
    const char* interface;
    const char* member;
    const char* argument;  ///< a text or a path; empty: there is none
};

constexpr const char* hci0 = "/org/bluez/hci0";
const std::vector<Called> table = {
    {"start", [](SdBus& bus, Done done) { bus.startDiscovery(hci0, std::move(done)); }, hci0, "org.bluez.Adapter1",
     "StartDiscovery", ""},
    {"stop", [](SdBus& bus, Done done) { bus.stopDiscovery(hci0, std::move(done)); }, hci0, "org.bluez.Adapter1",
     "StopDiscovery", ""},
    {"register", [](SdBus& bus, Done done) { bus.registerMonitor(hci0, std::move(done)); }, hci0,
     "org.bluez.AdvertisementMonitorManager1", "RegisterMonitor", "/org/nearcast/monitors"},
    {"unregister", [](SdBus& bus, Done done) { bus.unregisterMonitor(hci0, std::move(done)); }, hci0,
     "org.bluez.AdvertisementMonitorManager1", "UnregisterMonitor", "/org/nearcast/monitors"},
    {"objects", [](SdBus& bus, Done done) { bus.listObjects(std::move(done)); }, "/",
     "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", ""},
    {"device", [](SdBus& bus, Done done) { bus.listDevice("/org/bluez/hci0/dev_1", std::move(done)); },
     "/org/bluez/hci0/dev_1", "org.freedesktop.DBus.Properties", "GetAll", "org.bluez.Device1"},
};

class SdBusCallsTest : public SdBusTest {
protected:
    SdBusCallsTest() { connectToBluetoothd(); }

    /// The next call as bluetoothd gets it.
    MessagePointer received() {
        settle();
        MessagePointer call = system.takeCall();
        EXPECT_TRUE(call);
        return call;
    }
};

TEST_F(SdBusCallsTest, CallsWhatItIsToldTo) {
    for (const Called& row : table) {
        row.call(bus, noted(row.what));
        const MessagePointer call = received();
        ASSERT_TRUE(call) << row.what;
        EXPECT_STREQ(sd_bus_message_get_destination(call.get()), "org.bluez") << row.what;
        EXPECT_STREQ(sd_bus_message_get_path(call.get()), row.path) << row.what;
        EXPECT_STREQ(sd_bus_message_get_interface(call.get()), row.interface) << row.what;
        EXPECT_STREQ(sd_bus_message_get_member(call.get()), row.member) << row.what;
        EXPECT_EQ(sd_bus_message_get_auto_start(call.get()), 0) << row.what << ": it may not have bluetoothd started";
        const char* argument = "";
        const char type = row.argument[0] == '/' ? 'o' : 's';
        if (row.argument[0] != '\0') {
            EXPECT_GT(sd_bus_message_read_basic(call.get(), type, &argument), 0) << row.what;
        }
        EXPECT_STREQ(argument, row.argument) << row.what;
        EXPECT_GT(sd_bus_message_at_end(call.get(), 1), 0) << row.what << ": there is nothing more";
    }
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusCallsTest, AsksForEveryReport) {
    bus.setDiscoveryFilter(adapter, noted("filter"));
    const MessagePointer call = received();
    ASSERT_TRUE(call);
    EXPECT_STREQ(sd_bus_message_get_path(call.get()), adapter);
    EXPECT_STREQ(sd_bus_message_get_interface(call.get()), "org.bluez.Adapter1");
    EXPECT_STREQ(sd_bus_message_get_member(call.get()), "SetDiscoveryFilter");
    const char *first = "", *second = "", *third = "", *transport = "";
    int duplicates = 0;
    std::int16_t lowest = 0;
    ASSERT_GT(sd_bus_message_read(call.get(), "a{sv}", 3, &first, "s", &transport, &second, "b", &duplicates, &third,
                                  "n", &lowest),
              0);
    EXPECT_EQ((Lines{first, second, third}), (Lines{"Transport", "DuplicateData", "RSSI"}));
    EXPECT_STREQ(transport, "le");
    EXPECT_EQ(duplicates, 1);
    EXPECT_EQ(lowest, -127);
    FakeSystemBus::answer(call, "");
    settle();
    EXPECT_EQ(told(), Lines{"filter done"});
}

TEST_F(SdBusCallsTest, TellsOnceThatACallIsDone) {
    for (const Called& row : table) {
        if (row.interface == std::string_view(interface::objectManager)) continue;  // whose answers hold something
        if (row.interface == std::string_view(interface::properties)) continue;
        row.call(bus, noted(row.what));
        FakeSystemBus::answer(received(), "");
        settle();
        EXPECT_EQ(told(), Lines{std::string(row.what) + " done"});
        EXPECT_EQ(bus.left(), std::nullopt) << "it waits for nothing any more";
    }
}

TEST_F(SdBusCallsTest, TellsWhyACallFailed) {
    for (const Called& row : table) {
        row.call(bus, noted(row.what));
        FakeSystemBus::answerError(received(), "org.bluez.Error.NotReady", "Resource Not Ready");
        settle();
        EXPECT_EQ(told(), Lines{std::string(row.what) + ": org.bluez.Error.NotReady: Resource Not Ready"});
    }
}

TEST_F(SdBusCallsTest, TellsAnswersToTheirCallsInWhateverOrderTheyCome) {
    bus.startDiscovery(adapter, noted("first"));
    bus.stopDiscovery(adapter, noted("second"));
    const MessagePointer first = received();
    const MessagePointer second = received();
    FakeSystemBus::answer(second, "");
    FakeSystemBus::answer(first, "");
    settle();
    EXPECT_EQ(told(), (Lines{"second done", "first done"}));
}

TEST_F(SdBusCallsTest, ListsTheObjectsBeforeTheCallIsDone) {
    bus.listObjects(noted("list"));
    FakeSystemBus::answer(received(), "a{oa{sa{sv}}}", 2,                                                      //
                          adapter, 2, interface::adapter, 1, "Powered", "b", 1, interface::monitorManager, 0,  //
                          device, 1, interface::device, 2, "RSSI", "n", -60, "Name", "s", "QX1");
    settle();
    EXPECT_EQ(told(), (Lines{"added /org/bluez/hci0 on", "monitors /org/bluez/hci0",
                             std::string("listed ") + device + " -60 QX1", "list done"}));
}

TEST_F(SdBusCallsTest, ListsADeviceBeforeTheCallIsDone) {
    bus.listDevice(device, noted("list"));
    FakeSystemBus::answer(received(), "a{sv}", 1, "Name", "s", "QX1");
    settle();
    EXPECT_EQ(told(), (Lines{std::string("listed ") + device + " QX1", "list done"}));
}

TEST_F(SdBusCallsTest, FailsWhereAnAnswerIsNotWhatItShouldBe) {
    bus.listObjects(noted("objects"));
    FakeSystemBus::answer(received(), "s", "none");
    settle();
    EXPECT_EQ(told(), Lines{"objects: System.Error: No such device or address"});
    bus.listDevice(device, noted("device"));
    FakeSystemBus::answer(received(), "u", 7);
    settle();
    EXPECT_EQ(told(), Lines{"device: System.Error: No such device or address"});
}

TEST_F(SdBusCallsTest, WaitsTenSecondsForAnAnswer) {
    bus.startDiscovery(adapter, noted("start"));
    settle();
    ASSERT_TRUE(bus.left());
    EXPECT_LE(*bus.left(), 10s);
    EXPECT_GT(*bus.left(), 1s);
}

TEST_F(SdBusCallsTest, FailsWithTheBusThatHangsUp) {
    bus.startDiscovery(adapter, noted("start"));
    settle();
    system.hangUp();
    bus.process(true);
    const Lines lines = told();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].starts_with("start: org.freedesktop.DBus.Error.NoReply: ")) << lines[0];
    EXPECT_EQ(lines[1], "lost: System.Error: the connection was closed");
}

TEST_F(SdBusCallsTest, FailsInTheNextTurnWhereTheBusHungUpBefore) {
    system.hangUp();
    bus.startDiscovery(adapter, noted("start"));
    EXPECT_EQ(told(), Lines{}) << "nobody is called from inside a call";
    EXPECT_EQ(bus.left(), Time(0));
    bus.process(false);
    const Lines lines = told();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "start: System.Error: Connection reset by peer");
    EXPECT_TRUE(lines[1].starts_with("lost: ")) << lines[1];
}

TEST_F(SdBusCallsTest, FailsInTheNextTurnWithoutABus) {
    bus.disconnect();
    for (const Called& row : table) {
        row.call(bus, noted(row.what));
        EXPECT_EQ(told(), Lines{}) << "nobody is called from inside a call";
        EXPECT_EQ(bus.left(), Time(0));
        EXPECT_EQ(bus.process(false).messages, 0);
        EXPECT_EQ(told(), Lines{std::string(row.what) + ": System.Error: Transport endpoint is not connected"});
        EXPECT_EQ(bus.left(), std::nullopt);
    }
}

TEST_F(SdBusCallsTest, FailsInTheNextTurnForAnAdapterThatCannotBe) {
    bus.startDiscovery("hci0", noted("start"));
    bus.setDiscoveryFilter("", noted("filter"));
    settle();
    EXPECT_EQ(told(), (Lines{"start: System.Error: Invalid argument", "filter: System.Error: Invalid argument"}));
    EXPECT_FALSE(system.takeCall());
    EXPECT_TRUE(system.connected());
}

TEST_F(SdBusCallsTest, MayBeFollowedByAnotherOneFromItsEnd) {
    bus.startDiscovery("nowhere", [this](const std::optional<Failure>&) {
        listener.tell("first");
        bus.startDiscovery("nowhere", noted("second"));
    });
    bus.process(true);
    EXPECT_EQ(told(), Lines{"first"});
    bus.process(true);
    EXPECT_EQ(told(), Lines{"second: System.Error: Invalid argument"});
    bus.startDiscovery(adapter, [this](const std::optional<Failure>&) { bus.stopDiscovery(adapter, noted("stop")); });
    FakeSystemBus::answer(received(), "");
    FakeSystemBus::answer(received(), "");
    settle();
    EXPECT_EQ(told(), Lines{"stop done"});
}

TEST_F(SdBusCallsTest, EndsOnTheConsoleWhereItsEndThrows) {
    bus.startDiscovery(adapter, [](const std::optional<Failure>&) { throw std::runtime_error("the scan failed"); });
    bus.stopDiscovery(adapter, noted("stop"));
    FakeSystemBus::answer(received(), "");
    FakeSystemBus::answer(received(), "");
    settle();
    EXPECT_EQ(console.lines(), Lines{"The handler of a message of the system bus failed: the scan failed"});
    EXPECT_EQ(told(), Lines{"stop done"});
}

TEST_F(SdBusCallsTest, IsDroppedWithAllItHoldsWhenTheBusIsLeft) {
    const auto held = std::make_shared<int>();
    const Done done = [this, held](const std::optional<Failure>&) { listener.tell("done"); };
    bus.startDiscovery(adapter, done);
    settle();
    bus.startDiscovery("nowhere", done);
    EXPECT_EQ(held.use_count(), 4);
    bus.disconnect();
    EXPECT_EQ(held.use_count(), 2);
    bus.process(true);
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusCallsTest, LetsGoOfAllItHeldOnceItIsDone) {
    const auto held = std::make_shared<int>();
    bus.startDiscovery(adapter, [held](const std::optional<Failure>&) {});
    FakeSystemBus::answer(received(), "");
    settle();
    EXPECT_EQ(held.use_count(), 1);
}

}  // namespace

}  // namespace nearcast::bluez
