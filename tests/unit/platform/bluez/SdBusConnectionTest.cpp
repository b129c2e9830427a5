// SPDX-License-Identifier: Apache-2.0
// How a connection begins, what is told of bluetoothd on it, and how it ends.
#include "SdBusFixture.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace nearcast::bluez {

namespace {

constexpr const char* denied = "org.freedesktop.DBus.Error.AccessDenied";

/// What calls have for a limit that do not bring their own, while it lives.
class CallLimit {
public:
    explicit CallLimit(const char* text) { setenv(variable, text, 1); }
    ~CallLimit() { unsetenv(variable); }
    CallLimit(const CallLimit&) = delete;
    CallLimit& operator=(const CallLimit&) = delete;

private:
    static constexpr const char* variable = "SYSTEMD_BUS_TIMEOUT";
};

bool has(const std::vector<std::string>& rules, std::string_view part) {
    return std::any_of(rules.begin(), rules.end(),
                       [&](const std::string& rule) { return rule.find(part) != rule.npos; });
}

TEST_F(SdBusTest, AsksForWhatItHasToHear) {
    connect();
    EXPECT_EQ(system.asked(), (Lines{"Hello", "AddMatch", "AddMatch", "AddMatch", "GetNameOwner"}));
    ASSERT_EQ(system.rules().size(), 3U);
    EXPECT_TRUE(has(system.rules(), "member='NameOwnerChanged',arg0='org.bluez'"));
    EXPECT_TRUE(has(system.rules(), "sender='org.bluez',path_namespace='/org/bluez'"));
    EXPECT_TRUE(has(system.rules(), "sender='org.bluez',path='/'"));
}

TEST_F(SdBusTest, TellsNothingBeforeTheBusHasAnswered) {
    ASSERT_FALSE(bus.connect(listener));
    EXPECT_EQ(bus.process(true).messages, 0);
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusTest, TellsThatBluetoothdRuns) {
    system.setOwner(FakeSystemBus::bluetoothd);
    connect();
    EXPECT_EQ(told(), Lines{"bluetoothd is there"});
}

TEST_F(SdBusTest, TellsThatBluetoothdDoesNotRun) {
    connect();
    EXPECT_EQ(told(), Lines{"bluetoothd is not there"});
}

TEST_F(SdBusTest, TellsEachChangeOfBluetoothd) {
    connectToBluetoothd();
    system.changeOwner(service, ":1.1", "");
    settle();
    EXPECT_EQ(told(), Lines{"bluetoothd is not there"});
    system.changeOwner(service, "", ":1.2");
    settle();
    EXPECT_EQ(told(), Lines{"bluetoothd is there"});
}

TEST_F(SdBusTest, TellsOfOneThatWasReplacedThatItHasGoneAndCome) {
    connectToBluetoothd();
    system.changeOwner(service, ":1.1", ":1.2");
    settle();
    EXPECT_EQ(told(), (Lines{"bluetoothd is not there", "bluetoothd is there"}));
}

TEST_F(SdBusTest, TellsOnceOfAnOwnerThatIsNamedTwice) {
    connectToBluetoothd();
    system.changeOwner(service, "", ":1.1");
    settle();
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusTest, TellsOnceThatThereIsNoOwner) {
    connect();
    EXPECT_EQ(told(), Lines{"bluetoothd is not there"});
    system.changeOwner(service, ":1.1", "");
    settle();
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusTest, PassesOverTheOwnersOfOtherNames) {
    connectToBluetoothd();
    system.changeOwner("org.bluez.obex", ":1.1", "");
    settle();
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusTest, PassesOverAChangeOfTheOwnerThatIsNone) {
    connectToBluetoothd();
    system.signal(FakeSystemBus::bus, "/org/freedesktop/DBus", FakeSystemBus::bus, "NameOwnerChanged", "sss", service,
                  ":1.1", "");
    system.signal(FakeSystemBus::bus, "/org/freedesktop/DBus", FakeSystemBus::bus, "NameOwnerChanged", "ss", service,
                  ":1.1");
    settle();
    EXPECT_EQ(told(), Lines{"bluetoothd is not there"}) << "the whole one was taken, the other one does no harm";
}

TEST_F(SdBusTest, TakesAnOwnersNameOfAnotherTypeForNoAnswer) {
    system.answerOddly("GetNameOwner");
    connect();
    EXPECT_EQ(told(), Lines{});
    EXPECT_TRUE(system.connected());
}

TEST_F(SdBusTest, LosesABusThatDoesNotLetItHear) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.refuse("AddMatch", denied);
    connect();
    EXPECT_EQ(told(), Lines{std::string("lost: ") + denied + ": as the test wants"});
    EXPECT_EQ(bus.descriptor(), -1);
    settle();
    EXPECT_FALSE(system.connected());
    EXPECT_EQ(told(), Lines{}) << "once";
}

TEST_F(SdBusTest, LosesABusThatDoesNotSayWhetherBluetoothdRuns) {
    system.refuse("GetNameOwner", denied);
    connect();
    EXPECT_EQ(told(), Lines{std::string("lost: ") + denied + ": as the test wants"});
    EXPECT_EQ(bus.descriptor(), -1);
}

TEST_F(SdBusTest, LosesABusThatDoesNotGreetInTime) {
    system.ignore("Hello");
    {
        const CallLimit limit("1us");
        ASSERT_FALSE(bus.connect(listener));
    }
    system.serve();  // who the client is
    EXPECT_GT(bus.left(), Time(1));
    while (bus.process(false).messages > 0 && bus.left() != Time(0)) continue;
    EXPECT_EQ(bus.left(), Time(0)) << "the greeting is late";
    settle();
    const Lines lines = told();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("lost: ")) << lines[0];
}

TEST_F(SdBusTest, LosesABusThatHangsUp) {
    connectToBluetoothd();
    system.hangUp();
    EXPECT_EQ(bus.process(true).more, false);
    EXPECT_EQ(told(), Lines{"lost: System.Error: Connection reset by peer"});
}

TEST_F(SdBusTest, LosesABusThatHangsUpWithTheFirstMessageItLooksFor) {
    connectToBluetoothd();
    system.hangUp();
    bus.process(false);
    EXPECT_EQ(told(), Lines{"lost: System.Error: the connection was closed"});
    EXPECT_EQ(bus.descriptor(), -1);
}

TEST_F(SdBusTest, LosesABusThatTalksNonsense) {
    connectToBluetoothd();
    system.say("This is not what a message looks like.");
    bus.process(true);
    EXPECT_EQ(told(), Lines{"lost: System.Error: Bad message"});
    EXPECT_EQ(bus.descriptor(), -1);
}

TEST_F(SdBusTest, LosesABusWhoseDescriptorWasClosed) {
    connectToBluetoothd();
    close(bus.descriptor());
    bus.process(true);
    EXPECT_EQ(told(), Lines{"lost: System.Error: Bad file descriptor"});
    settle();
    connect();
    EXPECT_EQ(told(), Lines{"bluetoothd is there"});
}

TEST_F(SdBusTest, LeavesNoDescriptorBehind) {
    const auto next = [] {
        const int descriptor = dup(STDERR_FILENO);
        close(descriptor);
        return descriptor;
    };
    const int before = next();
    connectToBluetoothd();
    EXPECT_NE(next(), before);
    bus.disconnect();
    settle();
    EXPECT_EQ(next(), before);
}

TEST_F(SdBusTest, LeavesABusWhoseDescriptorWasClosed) {
    for (const bool lowerIsFree : {true, false}) {
        const int lower = dup(STDERR_FILENO);
        ASSERT_FALSE(bus.connect(listener));
        const int closed = bus.descriptor();
        ASSERT_GT(closed, lower);
        close(closed);
        if (lowerIsFree) close(lower);
        bus.disconnect();
        EXPECT_EQ(fcntl(closed, F_GETFD), -1) << "nothing is left behind in its place";
        if (!lowerIsFree) close(lower);
        EXPECT_EQ(fcntl(lower, F_GETFD), -1) << "nor elsewhere";
    }
}

TEST_F(SdBusTest, SaysWhyThereIsNoConnection) {
    const TemporaryFolder folder;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder.file("bus")).c_str(), 1);
    const auto failure = bus.connect(listener);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->name + ": " + failure->message, "System.Error: No such file or directory");
    EXPECT_EQ(bus.descriptor(), -1);
    EXPECT_EQ(bus.process(true).messages, 0);
    EXPECT_EQ(told(), Lines{});
}

TEST_F(SdBusTest, BeginsAnewOnceTheBusIsBack) {
    for (const bool runs : {true, false}) {
        const Lines all{runs ? "bluetoothd is there" : "bluetoothd is not there"};
        system.setOwner(runs ? FakeSystemBus::bluetoothd : "");
        connect();
        EXPECT_EQ(told(), all);
        system.hangUp();
        settle();
        EXPECT_EQ(told(), Lines{"lost: System.Error: Connection reset by peer"});
        connect();
        EXPECT_EQ(told(), all) << "although nothing has changed";
        settle();
        EXPECT_EQ(told(), Lines{});
    }
}

TEST_F(SdBusTest, LeavesItsConnectionForAnotherOne) {
    connectToBluetoothd();
    WrittenDown other;
    bus.startDiscovery(adapter, noted("start"));
    settle();
    ASSERT_FALSE(bus.connect(other));
    settle();
    EXPECT_EQ(told(), Lines{});
    EXPECT_EQ(other.take(), Lines{"bluetoothd is there"});
    EXPECT_EQ(std::count(system.asked().begin(), system.asked().end(), "Hello"), 2);
}

TEST_F(SdBusTest, LeavesTheBusWithoutAWord) {
    connectToBluetoothd();
    bus.startDiscovery(adapter, noted("start"));
    settle();
    bus.disconnect();
    settle();
    EXPECT_FALSE(system.connected());
    EXPECT_EQ(told(), Lines{});
    EXPECT_EQ(bus.descriptor(), -1);
    EXPECT_EQ(bus.events(), 0);
    EXPECT_EQ(bus.left(), std::nullopt);
}

TEST_F(SdBusTest, WaitsForTheBusAlone) {
    connectToBluetoothd();
    ASSERT_GE(bus.descriptor(), 0);
    EXPECT_EQ(bus.events(), POLLIN);
    EXPECT_EQ(bus.left(), std::nullopt);
    pollfd waiting{bus.descriptor(), bus.events(), 0};
    EXPECT_EQ(poll(&waiting, 1, 0), 0);
    report(-60);
    EXPECT_EQ(poll(&waiting, 1, 0), 1);
}

TEST_F(SdBusTest, WaitsForRoomWhereTheBusDoesNotListen) {
    connectToBluetoothd();
    constexpr int most = 100'000;
    int calls = 0;
    while (bus.events() == POLLIN && calls < most) {
        bus.startDiscovery(adapter, noted(""));
        ++calls;
    }
    EXPECT_EQ(bus.events(), POLLIN | POLLOUT) << "after " << calls;
}

TEST_F(SdBusTest, TakesOneMessageOrAll) {
    connectToBluetoothd();
    for (const int RSSI : {-60, -61, -62}) report(RSSI);
    const SdBus::Taken one = bus.process(false);
    EXPECT_EQ(one.messages, 1);
    EXPECT_FALSE(one.more);
    EXPECT_EQ(told().size(), 1U);
    const SdBus::Taken rest = bus.process(true);
    EXPECT_EQ(rest.messages, 2);
    EXPECT_FALSE(rest.more);
    EXPECT_EQ(told().size(), 2U);
    EXPECT_EQ(bus.process(true).messages, 0);
}

TEST_F(SdBusTest, LetsOtherWorkHaveItsTurnBetweenManyMessages) {
    connectToBluetoothd();
    constexpr int atOnce = 64;
    for (int i = 0; i < atOnce + 1; ++i) report(-60);
    const SdBus::Taken many = bus.process(true);
    EXPECT_EQ(many.messages, atOnce);
    EXPECT_TRUE(many.more);
    const SdBus::Taken rest = bus.process(true);
    EXPECT_EQ(rest.messages, 1);
    EXPECT_FALSE(rest.more);
}

TEST_F(SdBusTest, PutsOnTheConsoleWhatItsListenerThrows) {
    connectToBluetoothd();
    listener.onLine = [] { throw std::runtime_error("the session failed"); };
    report(-60);
    settle();
    listener.onLine = nullptr;
    EXPECT_EQ(console.lines(), Lines{"The handler of a message of the system bus failed: the session failed"});
    report(-61);
    settle();
    EXPECT_EQ(told().size(), 2U) << "it goes on";
}

}  // namespace

}  // namespace nearcast::bluez
