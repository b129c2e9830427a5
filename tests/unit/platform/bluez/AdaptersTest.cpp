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

constexpr AdapterNews classic{.powered = true, .discovering = {}, .powerState = {}, .central = false};

AdapterNews withAddress(std::string_view address) {
    AdapterNews news = on;
    news.address = address;
    return news;
}

TEST(Adapters, PreferOneWithLowEnergyToAClassicOne) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci0", classic);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
    EXPECT_FALSE(adapters.current()->lowEnergy);
    adapters.add("/org/bluez/hci1", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1") << "it can be switched on";
    adapters.add("/org/bluez/hci2", on);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci2");
    adapters.chooseAnew();
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci2");
}

TEST(Adapters, TakeOneThatDoesNotSayForOneWithLowEnergy) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci0", on);
    EXPECT_TRUE(adapters.current()->lowEnergy);
}

TEST(Adapters, StayWithTheirsAmongEquals) {
    Adapters adapters("");
    adapters.add("/org/bluez/hci0", off);
    adapters.add("/org/bluez/hci1", on);
    adapters.change("/org/bluez/hci1", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1") << "nothing is won by a change";
    adapters.change("/org/bluez/hci0", on);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
    adapters.change("/org/bluez/hci1", on);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
    adapters.remove("/org/bluez/hci0");
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
}

TEST(Adapters, TakeTheOneOfTheWantedAddressWhateverItsNumber) {
    for (const char* wanted : {"00:1A:7D:DA:71:13", "00:1a:7d:dA:71:13"}) {
        Adapters adapters(wanted);
        adapters.add("/org/bluez/hci0", withAddress("00:1A:7D:DA:71:14"));
        EXPECT_EQ(adapters.current(), nullptr) << wanted;
        EXPECT_EQ(adapters.names(), "hci0 00:1A:7D:DA:71:14");
        adapters.add("/org/bluez/hci1", withAddress("00:1A:7D:DA:71:13"));
        EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
        adapters.clear();
        adapters.add("/org/bluez/hci0", withAddress("00:1a:7d:da:71:13"));
        EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
        EXPECT_EQ(adapters.renumbered(), "") << "it is where it is wanted";
    }
}

TEST(Adapters, TakeTheBetterOfTwoWithTheSameAddress) {
    Adapters adapters("00:1A:7D:DA:71:13");
    adapters.add("/org/bluez/hci0", withAddress("00:1A:7D:DA:71:13"));
    adapters.add("/org/bluez/hci1", withAddress("00:1A:7D:DA:71:13"));
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci0");
    adapters.change("/org/bluez/hci0", off);
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1");
}

TEST(Adapters, SayWhereTheOneIsNowThatHadTheWantedNumber) {
    Adapters adapters("hci1");
    adapters.add("/org/bluez/hci0", withAddress("00:1A:7D:DA:71:10"));
    EXPECT_EQ(adapters.renumbered(), "") << "hci1 has not been seen";
    adapters.add("/org/bluez/hci1", withAddress("00:1A:7D:DA:71:11"));
    EXPECT_EQ(adapters.renumbered(), "");
    adapters.clear();
    EXPECT_EQ(adapters.renumbered(), "") << "it is nowhere";
    adapters.add("/org/bluez/hci0", withAddress("00:1A:7D:DA:71:11"));
    EXPECT_EQ(adapters.current(), nullptr);
    EXPECT_EQ(adapters.renumbered(), "hci0 now (bluez:00:1A:7D:DA:71:11 follows it)");
    adapters.add("/org/bluez/hci1", withAddress("00:1A:7D:DA:71:10"));
    EXPECT_EQ(adapters.chosen(), "/org/bluez/hci1") << "a number names whatever has it";
    EXPECT_EQ(adapters.renumbered(), "hci0 now (bluez:00:1A:7D:DA:71:11 follows it)");
}

TEST(Adapters, TakeZerosForNoAddress) {
    Adapters adapters("hci1");
    adapters.add("/org/bluez/hci1", withAddress("00:00:00:00:00:00"));
    EXPECT_EQ(adapters.current()->address, "");
    adapters.clear();
    adapters.add("/org/bluez/hci0", withAddress("00:00:00:00:00:00"));
    EXPECT_EQ(adapters.renumbered(), "");
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
