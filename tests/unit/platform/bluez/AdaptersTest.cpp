// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Adapters.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast::bluez {

namespace {

constexpr AdapterNews on{.powered = true, .discovering = {}, .powerState = {}};
constexpr AdapterNews off{.powered = false, .discovering = {}, .powerState = {}};

TEST(Adapters, HaveNoneAtFirst) {
    const Adapters adapters("");
    EXPECT_EQ(adapters.current(), nullptr);
    EXPECT_EQ(adapters.chosen(), "");
}

TEST(Adapters, PreferOneThatIsPowered) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci0", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
    adapters.add("/org/bluez/hci1", on);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
}

TEST(Adapters, StayWithTheirsWhileItIsPowered) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci1", on);
    adapters.add("/org/bluez/hci0", on);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
    adapters.change("/org/bluez/hci1", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
}

TEST(Adapters, ChooseTheFirstOfAList) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci10", on);
    adapters.add("/org/bluez/hci2", on);
    adapters.chooseAnew();
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci2");
}

TEST(Adapters, TakeTheOneThatIsWantedAlone) {
    Adapters adapters("hci1");
    adapters.add("/org/bluez/hci0", on);
    adapters.add("/org/bluez/hci10", on);
    EXPECT_EQ(adapters.current(), nullptr);
    adapters.add("/org/bluez/hci1", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
    adapters.remove("/org/bluez/hci1");
    EXPECT_EQ(adapters.current(), nullptr);
}

TEST(Adapters, ChangeOnlyWhatIsSaid) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci0", on);
    adapters.change("/org/bluez/hci0", {.powered = {}, .discovering = true, .powerState = {}});
    EXPECT_TRUE(adapters.current()->powered);
    EXPECT_TRUE(adapters.current()->discovering);
}

TEST(Adapters, DropNewsOfOnesTheyDoNotKnow) {
    Adapters adapters("");
    adapters.change("/org/bluez/hci0", on);
    adapters.offerMonitors("/org/bluez/hci0");
    EXPECT_EQ(adapters.current(), nullptr);
}

TEST(Adapters, NameThemselvesInOrder) {
    Adapters adapters("");
    for (const char* name : {"hci10", "hci2", "hci0"}) adapters.add(std::string("/org/bluez/") + name, on);
    EXPECT_EQ(adapters.names(), "hci0, hci2, hci10");
}

TEST(Adapters, AreNotMoreThanThereCanBe) {
    Adapters adapters("");
    for (int number = 0; number < 64; ++number) EXPECT_TRUE(adapters.add("/x/hci" + std::to_string(number), on));
    EXPECT_FALSE(adapters.add("/x/hci64", on));
    EXPECT_TRUE(adapters.add("/x/hci63", off)) << "one that is known";
}

}  // namespace

}  // namespace nearcast::bluez
