// SPDX-License-Identifier: Apache-2.0
#include <nearcast/QXBluetoothManager.h>
#include <nearcast/SettingRecord.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace nearcast {
namespace {

// Saved registries and other programs hold these: they never change.
TEST(SettingRecord, KeysHaveTheTextsOfSavedRegistries) {
    EXPECT_EQ(kQXPortSettings, "Port Settings");
    EXPECT_EQ(kQXDeviceType, "Device Type");
    EXPECT_EQ(kQXWithDrawer, "With Drawer");
    EXPECT_EQ(kQXDongleMACAddr, "MAC Address");
    EXPECT_EQ(kQXThreshouldRSSI, "Threshold RSSI");
    EXPECT_EQ(kQXNickName, "Nick Name");
}

TEST(SettingRecord, DeviceTypesHaveTheirNumbersIn32Bits) {
    EXPECT_EQ(QXDeviceTypeUnknown, 0);
    EXPECT_EQ(QXDeviceTypeDesktopPrinter, 1);
    EXPECT_EQ(QXDeviceTypePortablePrinter, 2);
    EXPECT_EQ(QXDeviceTypeTFTillfox, 3);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<QXDeviceType>, std::int32_t>));
}

TEST(SettingValue, KeepsTheKindsOfValueApart) {
    EXPECT_EQ(SettingValue(), SettingValue(nullptr));
    EXPECT_NE(SettingValue(true), SettingValue(1));
    EXPECT_NE(SettingValue(1), SettingValue(1.0));
    EXPECT_NE(SettingValue("1"), SettingValue(1));
    EXPECT_NE(SettingValue(SettingValue::Array{}), SettingValue(SettingValue::Dictionary{}));
    EXPECT_NE(SettingValue(nullptr), SettingValue(0));
    EXPECT_NE(SettingValue(SettingValue::Bytes{}), SettingValue(""));
}

TEST(SettingValue, EqualIntegersAreEqualWhateverTypeTheyCameFrom) {
    EXPECT_EQ(SettingValue(7), SettingValue(7U));
    EXPECT_EQ(SettingValue(7L), SettingValue(7ULL));
    EXPECT_NE(SettingValue(18446744073709551615ULL), SettingValue(-1));
    EXPECT_NE(SettingValue(9223372036854775808ULL).as<std::uint64_t>(), nullptr);
    EXPECT_NE(SettingValue(9223372036854775807ULL).as<std::int64_t>(), nullptr);
}

TEST(SettingValue, GivesItsValueOnlyAsTheKindItIs) {
    const SettingValue text = "é";
    ASSERT_NE(text.as<std::string>(), nullptr);
    EXPECT_EQ(*text.as<std::string>(), "é");
    EXPECT_EQ(text.as<bool>(), nullptr);
    EXPECT_EQ(SettingValue(false).as<std::int64_t>(), nullptr);
}

TEST(SettingValue, IsReadAsA32BitInteger) {
    const std::pair<SettingValue, std::int32_t> cases[] = {
        {nullptr, 0},
        {true, 1},
        {false, 0},
        {3, 3},
        {-5'000'000'000LL, INT32_MIN},
        {18446744073709551615ULL, INT32_MAX},
        {2.9, 2},
        {std::nan(""), 0},
        {"3", 3},
        {"Printer", 0},
        {SettingValue::Array{1}, 0},
        {SettingValue::Dictionary{{"Device Type", 1}}, 0},
        {SettingValue::Bytes{std::byte{1}}, 0},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(value.intValue(), expected);
}

}  // namespace
}  // namespace nearcast
