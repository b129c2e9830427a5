// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Adapters.h"

#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
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

class RfkillTest : public testing::Test {
protected:
    void place(const std::string& entry, const std::string& name, const std::string& type, bool soft, bool hard) {
        const auto folder = std::filesystem::path(folder_.file(entry));
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "name") << name << '\n';
        std::ofstream(folder / "type") << type << '\n';
        std::ofstream(folder / "soft") << soft << '\n';
        std::ofstream(folder / "hard") << hard << '\n';
    }
    [[nodiscard]] Block block() const { return Rfkill(folder_.file("")).blockOf("hci0"); }

    const TemporaryFolder folder_;
};

TEST_F(RfkillTest, FindsNoBlockWhereThereAreNoSwitches) { EXPECT_EQ(block(), Block::none); }

TEST_F(RfkillTest, FindsNoBlockWhereThereIsNoFolder) {
    EXPECT_EQ(Rfkill("/nowhere/at/all").blockOf("hci0"), Block::none);
}

TEST_F(RfkillTest, FindsTheAdaptersOwnBlock) {
    place("rfkill3", "hci0", "bluetooth", true, false);
    EXPECT_EQ(block(), Block::soft);
}

TEST_F(RfkillTest, FindsABlockOfTheWholeMachine) {
    place("rfkill0", "tpacpi_bluetooth_sw", "bluetooth", true, false);
    EXPECT_EQ(block(), Block::soft);
}

TEST_F(RfkillTest, LeavesBlocksOfOthersAlone) {
    place("rfkill0", "phy0", "wlan", true, true);
    place("rfkill1", "hci1", "bluetooth", true, true);
    EXPECT_EQ(block(), Block::none);
}

TEST_F(RfkillTest, SaysTheHarderOfTwo) {
    place("rfkill0", "laptop", "bluetooth", true, true);
    place("rfkill1", "hci0", "bluetooth", true, false);
    EXPECT_EQ(block(), Block::hard);
}

TEST_F(RfkillTest, FindsNoBlockInAnOpenSwitch) {
    place("rfkill0", "hci0", "bluetooth", false, false);
    EXPECT_EQ(block(), Block::none);
}

}  // namespace

}  // namespace nearcast::bluez
