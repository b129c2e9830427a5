// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/DeviceTable.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast::bluez {

namespace {

constexpr std::string_view path = "/org/bluez/hci0/dev_02_00_00_00_0A_0b";
constexpr std::uint8_t payload[] = {2, 0, 0, 0, 0, 1};
constexpr std::uint8_t otherPayload[] = {7};

DeviceNews reading(std::int16_t RSSI) {
    DeviceNews news;
    news.RSSI = RSSI;
    return news;
}

DeviceNews advertisement(std::int16_t RSSI, std::span<const std::uint8_t> octets, std::uint16_t company = 0xFFFF) {
    DeviceNews news = reading(RSSI);
    news.manufacturer = {company, octets};
    return news;
}

/// What the session does with a device that has come with its first report.
DeviceTable::Heard add(DeviceTable& table, std::string_view device, const DeviceNews& news) {
    table.learn(device, news);
    return table.changed(device, news);
}

TEST(DeviceTable, MakesAReportOfAReading) {
    DeviceTable table;
    const auto heard = table.changed(path, reading(-70));
    ASSERT_NE(heard.report, nullptr);
    EXPECT_EQ(heard.report->RSSI, -70);
}

TEST(DeviceTable, PutsTheCompanyBeforeTheOctetsLowOctetFirst) {
    DeviceTable table;
    const auto heard = add(table, path, advertisement(-70, payload, 0x1234));
    EXPECT_EQ(heard.report->manufacturerData, (std::vector<std::uint8_t>{0x34, 0x12, 2, 0, 0, 0, 0, 1}));
}

TEST(DeviceTable, CompletesAReadingWithTheLastManufacturerData) {
    DeviceTable table;
    add(table, path, advertisement(-70, payload));
    table.changed(path, advertisement(-70, otherPayload));
    const auto heard = table.changed(path, reading(-71));
    ASSERT_NE(heard.report, nullptr);
    EXPECT_EQ(heard.report->manufacturerData, (std::vector<std::uint8_t>{0xFF, 0xFF, 7}));
    EXPECT_EQ(heard.report->RSSI, -71);
}

TEST(DeviceTable, CompletesManufacturerDataWithTheLastReading) {
    DeviceTable table;
    add(table, path, reading(-70));
    DeviceNews news;
    news.manufacturer = {0xFFFF, payload};
    ASSERT_NE(table.changed(path, news).report, nullptr);
    EXPECT_EQ(table.changed(path, news).report->RSSI, -70);
}

TEST(DeviceTable, HasNoReadingAfterItHasBecomeInvalid) {
    DeviceTable table;
    add(table, path, reading(-70));
    DeviceNews ended;
    ended.noMoreRSSI = true;
    EXPECT_EQ(table.changed(path, ended).report, nullptr);
    DeviceNews news;
    news.manufacturer = {0xFFFF, payload};
    EXPECT_EQ(table.changed(path, news).report->RSSI, 127);
}

TEST(DeviceTable, LetsTheReadingOf127Pass) {
    DeviceTable table;
    EXPECT_EQ(add(table, path, reading(127)).report->RSSI, 127);
}

TEST(DeviceTable, TakesOtherNewsForNoReport) {
    DeviceTable table;
    add(table, path, reading(-70));
    DeviceNews news;
    news.name = "Printer";
    EXPECT_EQ(table.changed(path, news).report, nullptr);
    EXPECT_EQ(table.changed(path, reading(-70)).report->name, "Printer");
}

TEST(DeviceTable, RemembersServicesUntilOthersAreSaid) {
    DeviceTable table;
    DeviceNews news = reading(-70);
    news.hasServices = true;
    news.services = {"4f37d906-3f43-440c-98e0-9e709971cadf"};
    add(table, path, news);
    ASSERT_EQ(table.changed(path, reading(-71)).report->services.size(), 1U);
    EXPECT_EQ(table.changed(path, reading(-71)).report->services[0],
              CBUUID::UUIDWithString("4F37D906-3F43-440C-98E0-9E709971CADF"));
    news.services.clear();
    EXPECT_TRUE(table.changed(path, news).report->services.empty());
}

TEST(DeviceTable, ReadsTheAddressInThePath) {
    DeviceTable table;
    EXPECT_EQ(table.changed(path, reading(-70)).report->address, (DeviceAddress{2, 0, 0, 0, 10, 11}));
}

TEST(DeviceTable, PrefersTheAddressThatIsSaid) {
    DeviceTable table;
    DeviceNews news = reading(-70);
    news.address = "C0:FF:EE:00:00:01";
    news.randomAddress = true;
    const auto* const report = add(table, path, news).report;
    EXPECT_EQ(report->address, (DeviceAddress{0xC0, 0xFF, 0xEE, 0, 0, 1}));
    EXPECT_EQ(report->addressType, 1);
}

TEST(DeviceTable, MixesNothingOfTwoDevicesOfOnePath) {
    DeviceTable table;
    DeviceNews news = advertisement(-70, payload);
    news.address = "02:00:00:00:0A:0B";
    news.randomAddress = false;
    news.name = "public";
    news.hasServices = true;
    news.services = {"180f"};
    add(table, path, news);
    DeviceNews other = reading(-71);
    other.randomAddress = true;
    const auto* const report = add(table, path, other).report;
    EXPECT_EQ(report->addressType, 1);
    EXPECT_FALSE(report->name);
    EXPECT_FALSE(report->manufacturerData);
    EXPECT_TRUE(report->services.empty());
    EXPECT_EQ(report->address, (DeviceAddress{2, 0, 0, 0, 10, 11}));
}

TEST(DeviceTable, HasNoReadingOfADeviceThatIsDescribedAnewWithoutOne) {
    DeviceTable table;
    add(table, path, reading(-70));
    table.learn(path, DeviceNews());
    DeviceNews news;
    news.manufacturer = {0xFFFF, payload};
    EXPECT_EQ(table.changed(path, news).report->RSSI, 127);
}

TEST(DeviceTable, NamesServicesByTheirShortestTexts) {
    DeviceTable table;
    DeviceNews news = reading(-70);
    news.hasServices = true;
    news.services = {"0000180f-0000-1000-8000-00805f9b34fb", "4f37d906-3f43-440c-98e0-9e709971cadf"};
    const auto* const report = add(table, path, news).report;
    EXPECT_EQ(report->services.at(0).UUIDString(), "180F");
    EXPECT_EQ(report->services.at(1).UUIDString(), "4F37D906-3F43-440C-98E0-9E709971CADF");
}

TEST(DeviceTable, HasNoAddressWhereNoneCanBeRead) {
    DeviceTable table;
    for (const char* bad : {"/org/bluez/hci0/dev_02_00", "/org/bluez/hci0/dev_0G_00_00_00_00_00", "/", ""}) {
        EXPECT_FALSE(table.changed(bad, reading(-70)).report->address) << bad;
    }
}

TEST(DeviceTable, KnowsStrangersFromThoseItWasToldOf) {
    DeviceTable table;
    EXPECT_TRUE(table.changed(path, reading(-70)).stranger);
    EXPECT_TRUE(table.changed(path, reading(-70)).stranger);
    table.learn(path, DeviceNews());
    EXPECT_FALSE(table.changed(path, reading(-70)).stranger);
}

TEST(DeviceTable, ForgetsARemovedDevice) {
    DeviceTable table;
    add(table, path, advertisement(-70, payload));
    table.remove(path);
    table.remove(path);
    EXPECT_EQ(table.size(), 0U);
    EXPECT_FALSE(table.changed(path, reading(-70)).report->manufacturerData);
}

TEST(DeviceTable, ForgetsTheOneThatWasSilentForLongest) {
    DeviceTable table(2);
    add(table, "/a", advertisement(-70, payload));
    add(table, "/b", advertisement(-70, payload));
    table.changed("/a", reading(-70));
    add(table, "/c", advertisement(-70, payload));
    EXPECT_EQ(table.size(), 2U);
    EXPECT_FALSE(table.changed("/a", reading(-70)).stranger);
    EXPECT_TRUE(table.changed("/b", reading(-70)).stranger);
}

TEST(DeviceTable, TakesAsMuchAsAnAdvertisementCanCarryAndNotMore) {
    DeviceTable table;
    const std::vector<std::uint8_t> most(254, 1);
    const std::vector<std::uint8_t> tooMany(255, 2);
    add(table, path, advertisement(-70, most));
    const auto heard = table.changed(path, advertisement(-70, tooMany));
    EXPECT_EQ(heard.report->manufacturerData->size(), 2 + most.size());
    EXPECT_EQ(heard.report->manufacturerData->back(), 1);
}

TEST(DeviceTable, CutsLongNamesAndDropsWhatIsNoService) {
    DeviceTable table;
    const std::string longName(10'000, 'x');
    DeviceNews news = reading(-70);
    news.name = longName;
    news.hasServices = true;
    news.services.assign(1000, "180f");
    news.services[0] = longName;
    const auto* const report = add(table, path, news).report;
    EXPECT_EQ(report->name->size(), 248U);
    EXPECT_EQ(report->services.size(), 128U);
    EXPECT_EQ(report->services[0], CBUUID::UUIDWithShort(0x180F));
}

TEST(DeviceTable, KnowsNothingOfADeviceFromBeforeItWasCleared) {
    DeviceTable table;
    add(table, path, advertisement(-70, payload));
    table.clear();
    EXPECT_EQ(table.size(), 0U);
    const auto heard = table.changed(path, reading(-71));
    EXPECT_TRUE(heard.stranger);
    ASSERT_NE(heard.report, nullptr);
    EXPECT_FALSE(heard.report->manufacturerData);
}

}  // namespace

}  // namespace nearcast::bluez
