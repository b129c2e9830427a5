// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Rfkill.h"

#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace nearcast::bluez {

namespace {

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
