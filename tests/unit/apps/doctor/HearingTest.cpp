// SPDX-License-Identifier: Apache-2.0
#include "doctor/Hearing.h"
#include "lines/Line.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

using std::chrono::milliseconds;

constexpr DeviceAddress sender{0xC4, 0xF7, 0xC1, 0x4C, 0xC1, 0xC0};

AdvertisingReport withService() {
    AdvertisingReport report;
    report.services = {CBUUID::UUIDWithString(lines::dongleService)};
    report.RSSI = -60;
    return report;
}

AdvertisingReport withPayload(std::uint8_t last = 1) {
    AdvertisingReport report = withService();
    report.manufacturerData = {0xFF, 0xFF, 0x02, 0x4E, 0x43, 0x00, 0x00, last};
    return report;
}

AdvertisingReport withName(std::string name) {
    AdvertisingReport report = withService();
    report.name = std::move(name);
    return report;
}

class HearingTest : public testing::Test {
protected:
    void hear(const AdvertisingReport& report, int at = 0) { counter_.heard(report, milliseconds(at)); }
    [[nodiscard]] Hearing result(int end = 1000) const { return counter_.result(milliseconds(end)); }

    HearingCounter counter_;
};

TEST_F(HearingTest, PayloadAndNameOfOneDongleAreOneDongle) {
    hear(withPayload());
    hear(withName("QX024E43000001"));
    const Hearing heard = result();
    ASSERT_EQ(heard.dongles.size(), 1U);
    const DongleHearing& dongle = heard.dongles[0];
    EXPECT_EQ(dongle.address, "02:4E:43:00:00:01");
    EXPECT_EQ(dongle.reports, 2U);
    EXPECT_EQ(dongle.services, 2U);
    EXPECT_EQ(dongle.payloads, 1U);
    EXPECT_EQ(dongle.names, 1U);
}

TEST_F(HearingTest, APayloadOfFewerThanSixOctetsIsNotUsable) {
    AdvertisingReport report = withPayload();
    EXPECT_EQ(addressInPayload(report), "02:4E:43:00:00:01");
    report.manufacturerData->pop_back();
    EXPECT_EQ(addressInPayload(report), std::nullopt);
}

TEST_F(HearingTest, APayloadOfAnotherCompanyIsNotUsable) {
    AdvertisingReport report = withPayload();
    report.manufacturerData->at(1) = 0x00;
    EXPECT_EQ(addressInPayload(report), std::nullopt);
}

TEST_F(HearingTest, ANameIsUsableWithItsMarkerAndTwelveDigits) {
    EXPECT_EQ(addressInName(withName("QX024e43000001")), "02:4e:43:00:00:01");
    EXPECT_EQ(addressInName(withName("QX024E4300000")), std::nullopt);
    EXPECT_EQ(addressInName(withName("QY024E43000001")), std::nullopt);
    EXPECT_EQ(addressInName(withName("QX024E4300000G")), std::nullopt);
}

TEST_F(HearingTest, AReportThatDoesNotSayItsAddressIsThatOfItsSender) {
    AdvertisingReport silent = withService();
    silent.address = sender;
    hear(silent);
    EXPECT_EQ(result().dongles.at(0).address, "from C4:F7:C1:4C:C1:C0");
    AdvertisingReport saying = withPayload();
    saying.address = sender;
    hear(saying);
    hear(silent);
    EXPECT_EQ(result().dongles.at(0).address, "02:4E:43:00:00:01");
    EXPECT_EQ(result().dongles.at(0).reports, 2U);
}

TEST_F(HearingTest, WhatIsNoDongleIsForeign) {
    AdvertisingReport report;
    report.address = sender;
    hear(report);
    EXPECT_EQ(result().reports, 1U);
    EXPECT_EQ(result().foreign, 1U);
    EXPECT_TRUE(result().dongles.empty());
}

TEST_F(HearingTest, ReadingsThatAreNoneDoNotCountForTheSignal) {
    AdvertisingReport report = withPayload();
    report.RSSI = -50;
    hear(report);
    report.RSSI = -70;
    hear(report);
    report.RSSI = 127;
    hear(report);
    EXPECT_EQ(result().dongles.at(0).signals, 2U);
    EXPECT_DOUBLE_EQ(result().dongles.at(0).meanRSSI, -60);
}

TEST_F(HearingTest, TheLongestGapReachesToTheEnd) {
    hear(withPayload(), 100);
    hear(withPayload(), 400);
    EXPECT_DOUBLE_EQ(result(500).dongles.at(0).longestGap, 0.3);
    EXPECT_DOUBLE_EQ(result(2400).dongles.at(0).longestGap, 2);
}

TEST_F(HearingTest, ThoseWithTheMostReportsComeFirst) {
    hear(withPayload(1));
    hear(withPayload(2));
    hear(withPayload(2));
    EXPECT_EQ(result().dongles.at(0).address, "02:4E:43:00:00:02");
}

TEST_F(HearingTest, MoreDonglesThanThereIsRoomForAreForeign) {
    for (std::size_t dongle = 0; dongle <= HearingCounter::mostDongles; ++dongle) {
        AdvertisingReport report = withPayload(static_cast<std::uint8_t>(dongle & 0xFF));
        report.manufacturerData->at(6) = static_cast<std::uint8_t>(dongle >> 8);
        hear(report);
    }
    EXPECT_EQ(result().dongles.size(), HearingCounter::mostDongles);
    EXPECT_EQ(result().foreign, 1U);
    hear(withPayload(0));
    EXPECT_EQ(result().foreign, 1U);
}

}  // namespace
}  // namespace nearcast::cli
