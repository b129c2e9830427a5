// SPDX-License-Identifier: Apache-2.0
#include <nearcast/QXBluetoothManager.h>
#include <nearcast/SettingRecord.h>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace nearcast
