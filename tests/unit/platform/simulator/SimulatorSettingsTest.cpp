// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorOptions.h"

#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

namespace nearcast::simulator {

namespace {

SettingRecord recordOf(const Device& device) {
    Scene scene = quietScene({dongle(1, {1, 1})});
    scene.dongles[0].device = device;
    return *simulatorSettings(scene).at(device.portName);
}

TEST(SimulatorSettings, WriteAPrintersRecordAsRegistrationDoes) {
    const SettingRecord expected = {{"Device Type", 1},     {"With Drawer", true},
                                    {"Port Settings", "p"}, {"Threshold RSSI", -65},
                                    {"Nick Name", "Front"}, {"MAC Address", "02:00:00:00:00:01"}};
    EXPECT_EQ(recordOf({"BT:A", Device::Type::printer, true, "p", -65, "Front"}), expected);
}

TEST(SimulatorSettings, LeaveOutWhatIsAbsent) {
    const SettingRecord expected = {
        {"Device Type", 1}, {"With Drawer", false}, {"Nick Name", "(null)"}, {"MAC Address", "02:00:00:00:00:01"}};
    EXPECT_EQ(recordOf({"BT:A", Device::Type::printer, false, {}, {}, {}}), expected);
}

TEST(SimulatorSettings, WriteADrawerAlwaysWithDrawer) {
    const SettingRecord record = recordOf({"BT:A", Device::Type::drawer, false, {}, {}, {}});
    EXPECT_EQ(record.at("Device Type"), SettingValue(3));
    EXPECT_EQ(record.at("With Drawer"), SettingValue(true));
}

TEST(SimulatorSettings, LeaveOutDonglesWithoutADevice) {
    Scene scene = quietScene({dongle(1, {1, 1}), dongle(2, {2, 2})});
    scene.dongles[1].device = Device{"BT:B", Device::Type::printer, false, {}, {}, {}};
    const Settings settings = simulatorSettings(scene);
    ASSERT_EQ(settings.size(), 1U);
    EXPECT_EQ(settings.begin()->first, "BT:B");
}

}  // namespace

}  // namespace nearcast::simulator
