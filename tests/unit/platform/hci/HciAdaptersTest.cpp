// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciAdapters.h"

#include "doubles/TemporaryFolder.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

namespace nearcast::hci {

namespace {

/// What the kernel answers, with these things in it.
struct DeviceInfo {
    const char* name = "hci1";
    int flags = 0;
    int type = 1;
    Octets features = Octets(8, 0);

    [[nodiscard]] HciAdapter read() const {
        Octets octets = little(1, 2) + octetsOf(name);
        octets.resize(10);
        octets = octets + airAddress(alice) + little(static_cast<std::uint64_t>(flags), 4) +
                 little(static_cast<std::uint64_t>(type), 1) + features;
        std::uint8_t info[hciDeviceInfoOctets] = {};
        std::copy(octets.begin(), octets.end(), info);
        return readHciDeviceInfo(info);
    }
};

TEST(HciDeviceInfo, NamesTheController) {
    const HciAdapter adapter = DeviceInfo{}.read();
    EXPECT_EQ(adapter.index, 1);
    EXPECT_EQ(adapter.name, "hci1");
    EXPECT_EQ(adapter.address, alice);
}

TEST(HciDeviceInfo, MayHaveANameThatFillsItsPlace) {
    EXPECT_EQ(DeviceInfo{.name = "hci12345"}.read().name, "hci12345");
}

TEST(HciDeviceInfo, SaysWhetherTheControllerIsUp) {
    EXPECT_FALSE(DeviceInfo{.flags = 0x0A}.read().up);
    EXPECT_TRUE(DeviceInfo{.flags = 0x0B}.read().up);
}

TEST(HciDeviceInfo, NamesTheBus) {
    EXPECT_EQ(DeviceInfo{.type = 0}.read().bus, "virtual");
    EXPECT_EQ(DeviceInfo{.type = 1}.read().bus, "USB");
    EXPECT_EQ(DeviceInfo{.type = 0x13}.read().bus, "UART");
    EXPECT_EQ(DeviceInfo{.type = 15}.read().bus, "unknown");
}

TEST(HciDeviceInfo, KnowsLowEnergyOnlyOfAControllerThatWasAsked) {
    EXPECT_EQ(DeviceInfo{}.read().lowEnergy, std::nullopt);
    EXPECT_EQ(DeviceInfo{.features = hex("FF FF 8F FE DB FF 5B 87")}.read().lowEnergy, true);
    EXPECT_EQ(DeviceInfo{.features = hex("FF FF 8F FE 9B FF 59 83")}.read().lowEnergy, false);
}

class HciBlockTest : public testing::Test {
protected:
    void block(const std::string& rfkill, const char* soft, const char* hard) {
        std::filesystem::create_directories(folder_.file("hci0/" + rfkill));
        std::ignore = folder_.write("hci0/" + rfkill + "/soft", soft);
        std::ignore = folder_.write("hci0/" + rfkill + "/hard", hard);
    }
    HciBlock read() { return hciBlock("hci0", folder_.file("")); }

private:
    const TemporaryFolder folder_;
};

TEST_F(HciBlockTest, IsNoneWithoutASwitch) { EXPECT_FALSE(read()); }

TEST_F(HciBlockTest, TellsAProgramsFromTheMachines) {
    block("rfkill3", "0\n", "0\n");
    EXPECT_FALSE(read());
    block("rfkill3", "1\n", "0\n");
    EXPECT_TRUE(read().soft);
    EXPECT_FALSE(read().hard);
    block("rfkill3", "0\n", "1\n");
    EXPECT_FALSE(read().soft);
    EXPECT_TRUE(read().hard);
}

TEST_F(HciBlockTest, LooksAtSwitchesAlone) {
    block("power", "1\n", "1\n");
    EXPECT_FALSE(read());
}

TEST_F(HciBlockTest, TakesWhatCannotBeReadAsOpen) {
    block("rfkill3", "", "what");
    EXPECT_FALSE(read());
}

TEST(HciAdapters, GiveAReasonForOneThatIsNotThere) {
    int error = 0;
    EXPECT_FALSE(hciAdapter(0xFFFE, error));
    EXPECT_NE(error, 0);
}

class CapabilitiesTest : public testing::Test {
protected:
    Capabilities of(const std::string& status) { return ownCapabilities(folder_.write("status", status)); }

private:
    const TemporaryFolder folder_;
};

TEST_F(CapabilitiesTest, AreThoseInEffect) {
    const struct {
        const char* mask;
        bool netAdmin, netRaw;
    } cases[] = {{"0000000000000000", false, false}, {"0000000000001000", true, false},
                 {"0000000000002000", false, true},  {"0000000000003000", true, true},
                 {"000001ffffffcfff", false, false}, {"000001ffffffffff", true, true}};
    for (const auto& one : cases) {
        const auto found = of(std::string("Name:\tnearcast\nCapPrm:\t000001ffffffffff\nCapEff:\t") + one.mask + "\n");
        EXPECT_EQ(found.netAdmin, one.netAdmin) << one.mask;
        EXPECT_EQ(found.netRaw, one.netRaw) << one.mask;
    }
}

TEST_F(CapabilitiesTest, AreNoneWhereTheyCannotBeRead) {
    for (const char* status : {"", "Name:\tnearcast\n", "CapEff:", "CapEff:\tnone\n"}) {
        EXPECT_FALSE(of(status).netRaw) << status;
    }
    EXPECT_FALSE(ownCapabilities("/nowhere/status").netAdmin);
}

TEST(OwnProgram, IsTheProgramThatRuns) { EXPECT_TRUE(ownProgram().ends_with("/unit_platform_hci")) << ownProgram(); }

}  // namespace

}  // namespace nearcast::hci
