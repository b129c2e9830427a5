// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;
using Payload = std::vector<std::uint8_t>;

const std::string method = "centralManager:didDiscoverPeripheral:advertisementData:RSSI:: ";

/// A scan runs, with windows of one, and a delegate listens.
class Advertisement : public testing::Test, protected doubles::ManagerBench {
protected:
    Advertisement() {
        listen();
        manager.startScan(1);
    }
    ~Advertisement() override { manager.stopScan(); }
    Advertisement(const Advertisement&) = delete;
    Advertisement& operator=(const Advertisement&) = delete;
};

TEST_F(Advertisement, TheAddressIsWrittenInUpperCaseFromTheSixOctetsAfterTheMark) {
    const Payload payload{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xaa, 0xbb, 0xcc};
    hear(payload, {}, -60);
    hear(payload, {}, -60);
    EXPECT_EQ(reports(), Lines{"discover  0 00:11:22:AA:BB:CC -60"});
}

TEST_F(Advertisement, OctetsAfterTheAddressAreNotRead) {
    for (int times = 0; times < 2; ++times) hear(Payload{0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8}, {}, -60);
    EXPECT_EQ(reports(), Lines{"discover  0 01:02:03:04:05:06 -60"});
}

TEST_F(Advertisement, APayloadThatEndsInTheAddressIsAnErrorBeforeTheReadingIsLookedAt) {
    journal.watchTraces();
    hear(Payload{0xFF, 0xFF, 1, 2, 3, 4, 5}, "QX021A2B3C4D5E", 127);
    hear(Payload{0xFF, 0xFF}, "QX021A2B3C4D5E", -60);
    const auto errors = journal.lines("trace 7 ");
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_EQ(errors[0].find("127"), std::string::npos) << errors[0];
    EXPECT_EQ(journal.lines("trace 3 " + method).size(), 2U);
    EXPECT_EQ(manager.getRSSI("02:1A:2B:3C:4D:5E"), 127);
}

TEST_F(Advertisement, WithoutTheMarkTheAddressComesFromTheNameHoweverLongThePayloadIs) {
    const Payload payloads[] = {
        {}, {0xFF}, {0x4C, 0x00}, {0xFF, 0x00, 1, 2, 3, 4, 5, 6}, {0xFE, 0xFF, 1, 2, 3, 4, 5, 6}};
    for (const Payload& payload : payloads) hear(payload, "QX021a2b3c4d5e", -60);
    EXPECT_EQ(reports(), Lines(4, "discover  0 02:1a:2b:3c:4d:5e -60"));
}

TEST_F(Advertisement, ANameWithTheMarkerThatCannotBeCutIsAnError) {
    journal.watchTraces();
    for (const char* name : {"QX021A2", "QX", "xxQX345678901", "..QXQX........"}) {
        journal.clear();
        hear(Payload{}, name, -60);
        EXPECT_FALSE(journal.lines("trace 7 " + method).empty()) << name;
        EXPECT_TRUE(journal.lines("trace 6 " + method + "lastRssiDic").empty()) << name;
    }
}

TEST_F(Advertisement, AShortNameWithoutTheMarkerIsAnAddressAndSoIsAnAbsentOne) {
    for (int times = 0; times < 2; ++times) {
        hear(Payload{}, "Thermo", -60);
        hear(Payload{}, {}, -61);
        hear(Payload{}, "", -62);
    }
    EXPECT_EQ(reports(), (Lines{"discover  0 Thermo -60", "discover  0 (null):(null):(null):(null):(null):(null) -61",
                                "discover  0  -62"}));
}

TEST_F(Advertisement, AReadingOf127IsAnErrorAndOneOfMinus127IsNot) {
    journal.watchTraces();
    hear(dongle, 127);
    EXPECT_EQ(journal.lines("trace 7 "), Lines{"trace 7 " + method + "RSSI.intValue == 127, 127"});
    EXPECT_EQ(manager.getRSSI(dongle), 127);
    hearTimes(2, dongle, -127);
    EXPECT_EQ(reports(), Lines{"discover  0 00:11:22:AA:BB:CC -127"});
}

TEST_F(Advertisement, WithoutADelegateNothingIsLookedAt) {
    manager.setDelegate(nullptr);
    journal.watchTraces();
    hear(Payload{0xFF, 0xFF}, {}, 127);
    hear(dongle, -60);
    EXPECT_EQ(journal.lines("trace 6 "), Lines(2, "trace 6 " + method + "self.delegate == nil, <ptr>"));
    EXPECT_EQ(journal.lines("trace 7 "), Lines{});
    listen();
    hear(dongle, -60);
    EXPECT_EQ(reports(), Lines{}) << "this was the dongle's first";
}

TEST_F(Advertisement, WithoutManufacturerDataTheNameDoesNotCount) {
    journal.watchTraces();
    hear(std::nullopt, "QX021A2B3C4D5E", -60);
    EXPECT_EQ(journal.lines("trace 6 "), Lines{"trace 6 " + method + "manufactureData == nil, <ptr>"});
}

TEST_F(Advertisement, ARegisteredDongleIsReportedWithItsPortAndItsRecordsType) {
    addPrinter("A", dongle);
    manager.addSettingForTFTillfoxPortName("B", {}, secondDongle, {}, {});
    hearTimes(2, dongle, -60);
    hearTimes(2, secondDongle, -61);
    EXPECT_EQ(reports(), (Lines{"discover A 1 00:11:22:AA:BB:CC -60", "discover B 3 00:11:22:AA:BB:DD -61"}));
}

TEST_F(Advertisement, TheTypeIsReadFromTheRecordAsAnInteger) {
    const std::pair<SettingValue, int> cases[] = {
        {2, 2},
        {-7, -7},
        {true, 1},
        {"3", 3},
        {" 12x", 12},
        {nullptr, 0},
        {2.9, 2},
        {1e99, INT32_MAX},
        {SettingValue::Array{1}, 0},
        {9'999'999'999LL, INT32_MAX},
    };
    for (const auto& [type, expected] : cases) {
        const SettingRecord record{{"MAC Address", std::string(dongle)}, {"Device Type", type}};
        manager.setSettings(Settings{{"A", std::make_shared<const SettingRecord>(record)}});
        journal.clear();
        hearTimes(2, dongle, -60);
        EXPECT_EQ(reports().back(), "discover A " + std::to_string(expected) + " 00:11:22:AA:BB:CC -60");
    }
}

TEST_F(Advertisement, ADelegateThatDoesNotAskForReportsStillLetsTheWindowsFill) {
    auto deaf = listener();
    deaf->didDiscoverPort = nullptr;
    manager.setDelegate(deaf);
    manager.stopScan();
    manager.startScan(3);
    hearTimes(3, dongle, -60);
    EXPECT_EQ(manager.getRSSI(dongle), -60);
    listen();
    hear(dongle, -59);
    EXPECT_EQ(reports(), Lines{"discover  0 00:11:22:AA:BB:CC -59"});
}

TEST_F(Advertisement, ADefaultWindowReportsFromTheSeventhOn) {
    manager.stopScan();
    manager.startScan(7);
    for (const std::int32_t RSSI : {-61, -60, -62, -63, -64, -65}) hear(dongle, RSSI);
    EXPECT_EQ(reports(), Lines{});
    EXPECT_EQ(manager.getRSSI(dongle), 0);
    hear(dongle, -66);
    EXPECT_EQ(reports(), Lines{"discover  0 00:11:22:AA:BB:CC -60"});
    EXPECT_EQ(manager.getRSSI(dongle), -60);
}

TEST_F(Advertisement, NoThresholdIsApplied) {
    manager.addSettingForPrinterPortName("A", {}, false, dongle, -30, {});
    hearTimes(2, dongle, -90);
    EXPECT_EQ(reports(), Lines{"discover A 1 00:11:22:AA:BB:CC -90"});
}

TEST_F(Advertisement, EachDongleHasWindowsOfItsOwn) {
    hear(dongle, -60);
    hear(secondDongle, -70);
    EXPECT_EQ(reports(), Lines{});
    hear(secondDongle, -71);
    hear(dongle, -61);
    EXPECT_EQ(reports(), (Lines{"discover  0 00:11:22:AA:BB:DD -71", "discover  0 00:11:22:AA:BB:CC -61"}));
}

const std::string takeTable = "take _lockRssiDataFlag";
const std::string releaseTable = "release _lockRssiDataFlag";

TEST_F(Advertisement, ANewDongleIsTracedUnderTheTablesLockAndDropped) {
    hear(secondDongle, -60);
    journal.clear();
    journal.watchLocks();
    journal.watchTraces();
    hear(dongle, -60);
    const std::string arguments = method + "<ptr>, <ptr>, <ptr>, -60";
    const std::string mark = "(manufactureDataBytes[0] == 0xff) && (manufactureDataBytes[1] == 0xff), 255, 255";
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 2 " + arguments, "trace 6 " + method + mark, "take _lockCalibrateActionAreaFlag",
                     "release _lockCalibrateActionAreaFlag", takeTable, "trace 6 " + method + "rssiData.count != 0, 1",
                     "trace 6 " + method + "lastRssiDic == nil, <ptr>", releaseTable, "trace 3 " + arguments}));
}

TEST_F(Advertisement, AnEmptyTableIsNotTracedByItsCount) {
    journal.watchTraces();
    hear(dongle, -60);
    EXPECT_EQ(journal.lines("trace 6 " + method + "rssiData.count"), Lines{});
}

TEST_F(Advertisement, AWindowThatFillsIsTracedUnderTheTablesLockAndItsMissingOutputAfterIt) {
    manager.startScan(3);
    hear(dongle, -60);
    journal.watchLocks();
    journal.watchTraces();
    hear(dongle, -60);
    const auto lines = journal.lines();
    ASSERT_GE(lines.size(), 6U);
    const Lines end(lines.end() - 6, lines.end());
    EXPECT_EQ(end, (Lines{takeTable, "trace 6 " + method + "rssiData.count != 0, 1",
                          "trace 6 " + method + "rawRSSIQueue.count < self.samplingNumber, 2, 3", releaseTable,
                          "trace 6 " + method + "outputRssi == nil, <ptr>",
                          "trace 3 " + method + "<ptr>, <ptr>, <ptr>, -60"}));
}

TEST_F(Advertisement, AHistoryThatFillsIsTracedAndAFullOneIsNot) {
    manager.startScan(2);
    hear(dongle, -60);
    journal.watchTraces();
    hearTimes(3, dongle, -60);
    const std::string text = "trace 6 " + method + "outputRSSIQueue.count < self.samplingNumber, ";
    EXPECT_EQ(journal.lines("trace 6 " + method + "outputRSSIQueue"), (Lines{text + "0, 2", text + "1, 2"}));
    EXPECT_EQ(reports().size(), 3U);
}

TEST_F(Advertisement, AnOutputOfARegisteredDongleTakesItsLocksOneAfterAnother) {
    addPrinter("A", dongle);
    hear(dongle, -60);
    journal.clear();
    journal.watchLocks();
    hear(dongle, -60);
    const std::string take = "take _lockMutableSettingsFlag";
    const std::string release = "release _lockMutableSettingsFlag";
    EXPECT_EQ(journal.lines(),
              (Lines{"take _lockCalibrateActionAreaFlag", "release _lockCalibrateActionAreaFlag", takeTable,
                     releaseTable, take, release, take, release, "discover A 1 00:11:22:AA:BB:CC -60"}));
}

TEST_F(Advertisement, AnUnregisteredDongleIsTracedAndLookedUpOnce) {
    hear(dongle, -60);
    journal.watchLocks();
    journal.watchTraces();
    hear(dongle, -60);
    EXPECT_EQ(journal.count("trace 6 " + method + "registeredPortName == nil, <ptr>"), 1U);
    EXPECT_EQ(journal.count("take _lockMutableSettingsFlag"), 1U);
}

TEST_F(Advertisement, ADelegateThatDoesNotAskForReportsIsTracedAndNothingIsLookedUp) {
    auto deaf = listener();
    deaf->didDiscoverPort = nullptr;
    manager.setDelegate(deaf);
    hear(dongle, -60);
    journal.watchTraces();
    hear(dongle, -60);
    EXPECT_EQ(journal.count("trace 6 " + method +
                            "[self.delegate respondsToSelector:@selector(didDiscoverPort:deviceType:MACAddr:RSSI:)] "
                            "== NO, <ptr>, <ptr>"),
              1U);
    EXPECT_EQ(journal.lines("trace 2 getPortNameFromMACAddr:"), Lines{});
    EXPECT_EQ(reports(), Lines{});
}

TEST_F(Advertisement, TheMarkerIsFoundInTheCutAddressAcrossNoColon) {
    hear(Payload{}, "..QX0123456789", -60);  // QX:01:23:45:67:89
    hear(Payload{}, "..QX0123456789", -60);
    EXPECT_EQ(reports(), Lines{});
    hear(Payload{}, "...QX123456789", -60);  // .Q:X1:23:45:67:89
    hear(Payload{}, "...QX123456789", -60);
    EXPECT_EQ(reports(), Lines{"discover  0 .Q:X1:23:45:67:89 -60"});
}

TEST_F(Advertisement, ARecordWithoutATypeIsReportedAsOfTypeUnknown) {
    const SettingRecord record{{"MAC Address", std::string(dongle)}};
    manager.setSettings(Settings{{"A", std::make_shared<const SettingRecord>(record)}});
    hearTimes(2, dongle, -60);
    EXPECT_EQ(reports(), Lines{"discover A 0 00:11:22:AA:BB:CC -60"});
}

}  // namespace
}  // namespace nearcast
