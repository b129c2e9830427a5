// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Availability.h"

#include "doubles/FakeSystemBus.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr auto forever = std::chrono::microseconds(1h);
constexpr auto brief = 1ms;  // a limit that is waited for

class AvailabilityTest : public testing::Test {
protected:
    bool available(std::chrono::microseconds limit = forever) {
        const ServedSystemBus served(system);
        return isBluetoothdAvailable(limit);
    }

    FakeSystemBus system;
};

TEST_F(AvailabilityTest, IsThereWhereBluetoothdRuns) {
    system.setOwner(FakeSystemBus::bluetoothd);
    EXPECT_TRUE(available());
    EXPECT_EQ(system.asked(), (Names{"Hello", "NameHasOwner"}));
}

TEST_F(AvailabilityTest, IsThereWhereTheBusCanStartIt) {
    system.setActivatable({"org.freedesktop.DBus", "org.bluez", "org.freedesktop.login1"});
    EXPECT_TRUE(available());
    EXPECT_EQ(system.asked(), (Names{"Hello", "NameHasOwner", "ListActivatableNames"})) << "and nobody starts it";
}

TEST_F(AvailabilityTest, IsNotThereWhereItNeitherRunsNorCanBeStarted) {
    EXPECT_FALSE(available());
    system.setActivatable({"org.bluez.obex", "org", ""});
    EXPECT_FALSE(available());
}

TEST_F(AvailabilityTest, IsThereWhereTheBusCanStartItAndDoesNotSayWhetherItRuns) {
    system.setActivatable({"org.bluez"});
    system.refuse("NameHasOwner", "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_TRUE(available());
}

TEST_F(AvailabilityTest, IsNotThereWhereTheAnswersAreNotWhatTheyShouldBe) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.setActivatable({"org.bluez"});
    system.answerOddly("NameHasOwner");
    system.answerOddly("ListActivatableNames");
    EXPECT_FALSE(available());
}

TEST_F(AvailabilityTest, IsNotThereWhereTheBusRefusesToSay) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.setActivatable({"org.bluez"});
    system.refuse("NameHasOwner", "org.freedesktop.DBus.Error.AccessDenied");
    system.refuse("ListActivatableNames", "org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_FALSE(available());
}

TEST_F(AvailabilityTest, IsNotThereWithoutABus) {
    const TemporaryFolder folder;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder.file("bus")).c_str(), 1);
    EXPECT_FALSE(isBluetoothdAvailable());
}

TEST_F(AvailabilityTest, IsNotWaitedForWhereTheBusDoesNotAnswer) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.ignore("NameHasOwner");
    system.ignore("ListActivatableNames");
    EXPECT_FALSE(available(brief));
}

TEST_F(AvailabilityTest, IsNotWaitedForWhereTheBusDoesNotGreet) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.ignore("Hello");
    EXPECT_FALSE(available(brief));
}

TEST_F(AvailabilityTest, IsNotWaitedForWhereTheBusHangs) {
    system.setOwner(FakeSystemBus::bluetoothd);
    system.hang();
    EXPECT_FALSE(available(brief));
}

TEST_F(AvailabilityTest, SaysWhyThereIsNoGreeting) {
    const auto greeting = [this](std::chrono::microseconds limit) {
        const ServedSystemBus served(system);
        sd_bus* opened = nullptr;
        EXPECT_GE(sd_bus_open_system(&opened), 0);
        const BusPointer bus(opened);
        return awaitGreeting(opened, limit);
    };
    EXPECT_EQ(greeting(forever), 0);
    system.refuse("Hello", "org.freedesktop.DBus.Error.LimitsExceeded");
    EXPECT_EQ(greeting(forever), -ENOBUFS);
    system.hang();
    EXPECT_EQ(greeting(brief), -ETIMEDOUT);
}

}  // namespace

}  // namespace nearcast::bluez
