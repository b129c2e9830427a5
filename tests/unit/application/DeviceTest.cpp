// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Device.h>

#include <nearcast/Platform.h>
#include <nearcast/PortException.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>

namespace nearcast {
namespace {

const Address front("00:11:22:AA:BB:CC");
const Address bar("00:11:22:AA:BB:DD");

/// The manager of the process, without a radio.
QXNearcastManager& manager() {
    static QXNearcastManager& only = [&]() -> QXNearcastManager& {
        PlatformOptions options;
        options.radio = "none";
        options.console = [](std::string_view) {};
        Platform::choose(options);
        return QXNearcastManager::sharedManager();
    }();
    return only;
}

SettingRecord recordOf(std::string_view portName) { return *manager().getSettings()->at(std::string(portName)); }

TEST(Device, IsRegisteredAsAPrinterWithAllThatIsGiven) {
    addDevice(manager(), {.portName = "BT:Front",
                          .address = front,
                          .useDrawer = true,
                          .portSettings = "receipt",
                          .threshold = -65.9,
                          .nickName = "Front desk"});
    const SettingRecord expected{{"Device Type", QXDeviceTypeDesktopPrinter},
                                 {"With Drawer", true},
                                 {"MAC Address", "00:11:22:AA:BB:CC"},
                                 {"Port Settings", "receipt"},
                                 {"Threshold RSSI", -65},
                                 {"Nick Name", "Front desk"}};
    EXPECT_EQ(recordOf("BT:Front"), expected);
}

TEST(Device, IsRegisteredAsACashDrawer) {
    addDevice(manager(), {.portName = "BT:Drawer", .address = bar, .kind = Device::Kind::cashDrawer});
    const SettingRecord expected{{"Device Type", QXDeviceTypeTFTillfox},
                                 {"With Drawer", true},
                                 {"MAC Address", "00:11:22:AA:BB:DD"},
                                 {"Nick Name", "(null)"}};
    EXPECT_EQ(recordOf("BT:Drawer"), expected);
}

TEST(Device, ThatIsRefusedIsNamedByPortAndAddress) {
    addDevice(manager(), {.portName = "BT:Front", .address = front});
    try {
        addDevice(manager(), {.portName = "BT:Second", .address = front});
        FAIL() << "the address is in use";
    } catch (const PortException& refused) {
        EXPECT_EQ(refused.portName(), "BT:Second");
        EXPECT_EQ(refused.MACAddr(), "00:11:22:AA:BB:CC");
        EXPECT_EQ(refused.reason(), "The specified dongle MAC address is already in use.");
    }
}

const SettingRecord record{{"Device Type", 1},
                           {"With Drawer", false},
                           {"Nick Name", "Front desk"},
                           {"MAC Address", "00:11:22:AA:BB:CC"},
                           {"Threshold RSSI", -65},
                           {"Port Settings", "receipt"},
                           {"Vendor Key", SettingValue::Array{1, "two", nullptr}}};

/// The record but for one key.
SettingRecord but(const char* key, SettingValue value) {
    SettingRecord changed = record;
    changed.insert_or_assign(key, std::move(value));
    return changed;
}

SettingRecord lacking(const char* key) {
    SettingRecord changed = record;
    changed.erase(key);
    return changed;
}

TEST(ChangedRecord, HasOneThingChangedAndKeepsTheRest) {
    EXPECT_EQ(*withThreshold(record, -60), but("Threshold RSSI", -60));
    EXPECT_EQ(*withNickName(record, "Bar"), but("Nick Name", "Bar"));
    EXPECT_EQ(*withPortSettings(record, ""), but("Port Settings", ""));
    EXPECT_EQ(*withDrawer(record, true), but("With Drawer", true));
    EXPECT_EQ(*withAddress(record, bar), but("MAC Address", "00:11:22:AA:BB:DD"));
}

TEST(ChangedRecord, LacksWhatIsTakenAway) {
    EXPECT_EQ(*withThreshold(record, {}), lacking("Threshold RSSI"));
    EXPECT_EQ(*withPortSettings(record, {}), lacking("Port Settings"));
    EXPECT_EQ(*withNickName(record, {}), but("Nick Name", "(null)"));
    EXPECT_EQ(*withThreshold(SettingRecord(), {}), SettingRecord());
}

TEST(ChangedRecord, HasAThresholdThatIsCutAndClamped) {
    EXPECT_EQ(*withThreshold(record, -60.9), but("Threshold RSSI", -60));
    EXPECT_EQ(*withThreshold(record, 1e300), but("Threshold RSSI", std::numeric_limits<std::int32_t>::max()));
}

TEST(RecordReading, FindsWhatTheRecordSays) {
    EXPECT_EQ(addressOf(record), front);
    EXPECT_EQ(thresholdOf(record), -65);
    EXPECT_EQ(nickNameOf(record), "Front desk");
    EXPECT_EQ(portSettingsOf(record), "receipt");
    EXPECT_EQ(thresholdOf(but("Threshold RSSI", -65.5)), -65.5);
}

TEST(RecordReading, FindsNothingWhereTheRecordIsSilentOrSaysSomethingElse) {
    EXPECT_EQ(addressOf(SettingRecord()), std::nullopt);
    EXPECT_EQ(addressOf(but("MAC Address", 12)), std::nullopt);
    EXPECT_EQ(thresholdOf(but("Threshold RSSI", "-65")), std::nullopt);
    EXPECT_EQ(thresholdOf(lacking("Threshold RSSI")), std::nullopt);
    EXPECT_EQ(nickNameOf(but("Nick Name", "(null)")), std::nullopt);
    EXPECT_EQ(portSettingsOf(lacking("Port Settings")), std::nullopt);
}

TEST(ChangeOfADevice, ReplacesItsRecordInTheManager) {
    addDevice(manager(), {.portName = "BT:Front", .address = front, .nickName = "Front desk"});
    addDevice(manager(), {.portName = "BT:Bar", .address = bar});
    const auto before = manager().getSettings();
    EXPECT_TRUE(changeDevice(manager(), "BT:Front", [](const auto& found) { return withThreshold(found, -60); }));
    EXPECT_EQ(thresholdOf(recordOf("BT:Front")), -60);
    EXPECT_EQ(nickNameOf(recordOf("BT:Front")), "Front desk");
    EXPECT_EQ(manager().getSettings()->at("BT:Bar"), before->at("BT:Bar")) << "the others are shared";
}

TEST(ChangeOfADevice, ThatIsNotThereIsNone) {
    int calls = 0;
    EXPECT_FALSE(changeDevice(manager(), "BT:Front", [&](const auto& found) {
        ++calls;
        return withThreshold(found, -60);
    }));
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(manager().getSettings()->empty());
}

TEST(ChangeOfADevice, ThatThrowsChangesNothing) {
    addDevice(manager(), {.portName = "BT:Front", .address = front});
    const auto broken = [](const SettingRecord&) -> SettingRecordPointer { throw std::runtime_error("no"); };
    EXPECT_THROW(changeDevice(manager(), "BT:Front", broken), std::runtime_error);
    EXPECT_EQ(addressOf(recordOf("BT:Front")), front);
}

}  // namespace
}  // namespace nearcast
