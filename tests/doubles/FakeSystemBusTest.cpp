// SPDX-License-Identifier: Apache-2.0
#include "doubles/FakeSystemBus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace nearcast::bluez {

namespace {

using Names = std::vector<std::string>;

std::string address() {
    const char* const value = getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return value == nullptr ? "none" : value;
}

/// A client that asks the bus and waits for the answers.
class FakeSystemBusTest : public testing::Test {
protected:
    FakeSystemBusTest() {
        sd_bus* opened = nullptr;
        EXPECT_GE(sd_bus_open_system(&opened), 0);
        client_.reset(opened);
    }

    /// What a method of the bus answers: the text, the error's name, or "?" where it is no text.
    std::string ask(const char* method) {
        sd_bus_error error{};
        sd_bus_message* raw = nullptr;
        sd_bus_call_method(client_.get(), driver::name, driver::path, driver::name, method, &error, &raw, "s", service);
        const MessagePointer reply(raw);
        const std::string failed = error.name == nullptr ? "?" : error.name;
        sd_bus_error_free(&error);
        const char* text = nullptr;
        return reply && sd_bus_message_read_basic(raw, 's', &text) > 0 ? text : failed;
    }
    /// Sends a call to bluetoothd, as the bus gets it.
    MessagePointer callDaemon() {
        EXPECT_GE(
            sd_bus_call_method_async(client_.get(), nullptr, service, "/", "a.b", "Do", nullptr, nullptr, "s", "x"), 0);
        settle();
        return system.takeCall();
    }
    /// Until neither side has anything more to do.
    void settle() {
        for (int idle = 0; idle < 2; ++idle) {
            const bool served = system.serve();
            if (sd_bus_process(client_.get(), nullptr) > 0 || served) idle = -1;
        }
    }

    const std::string before = address();
    FakeSystemBus system;

private:
    BusPointer client_;
};

TEST_F(FakeSystemBusTest, NamesItsAddressForAsLongAsItLives) {
    const std::string first = address();
    EXPECT_NE(first, before);
    {
        const FakeSystemBus other;
        EXPECT_NE(address(), first);
    }
    EXPECT_EQ(address(), first);
}

TEST_F(FakeSystemBusTest, SaysWhoOwnsTheName) {
    const ServedSystemBus served(system);
    EXPECT_EQ(ask("GetNameOwner"), "org.freedesktop.DBus.Error.NameHasNoOwner");
}

TEST_F(FakeSystemBusTest, AnswersAsTheTestWants) {
    system.setOwner(":1.9");
    system.refuse("AddMatch", "a.b.Refused");
    system.answerOddly("NameHasOwner");
    {
        const ServedSystemBus served(system);
        EXPECT_EQ(ask("GetNameOwner"), ":1.9");
        EXPECT_EQ(ask("AddMatch"), "a.b.Refused");
        EXPECT_EQ(ask("NameHasOwner"), "?") << "it is a number";
    }
    EXPECT_EQ(system.asked(), (Names{"Hello", "GetNameOwner", "AddMatch", "NameHasOwner"}));
    EXPECT_EQ(system.rules(), Names{}) << "what was refused is no rule";
}

TEST_F(FakeSystemBusTest, LeavesCallsOfBluetoothdToTheTest) {
    const MessagePointer call = callDaemon();
    ASSERT_TRUE(call);
    EXPECT_STREQ(sd_bus_message_get_member(call.get()), "Do");
    EXPECT_FALSE(system.takeCall());
}

TEST_F(FakeSystemBusTest, KeepsTheAnswersToItsCalls) {
    settle();
    system.call(FakeSystemBus::bluetoothd, "/", "org.freedesktop.DBus.Peer", "Ping", "");
    settle();
    EXPECT_TRUE(system.takeReply());
    EXPECT_FALSE(system.takeReply());
}

TEST_F(FakeSystemBusTest, SaysNothingWhileItHangs) {
    system.hang();
    settle();
    EXPECT_FALSE(system.connected());
    EXPECT_EQ(system.asked(), Names{});
}

}  // namespace

}  // namespace nearcast::bluez
