// SPDX-License-Identifier: Apache-2.0
#include "doctor/Hearing.h"
#include "support/Dongle.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

using std::chrono::milliseconds;

constexpr DeviceAddress sender{0xC4, 0xF7, 0xC1, 0x4C, 0xC1, 0xC0};

AdvertisingReport withService() {
    AdvertisingReport report;
    report.services = {CBUUID::UUIDWithString(dongle::serviceUUID)};
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
    report.manufacturerData = {0xFE, 0xFF};
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

/// The text of the address, and where it stands; "none".
std::string said(const AdvertisingReport& report) {
    const auto address = addressSaidIn(report);
    if (!address) return "none";
    return address->text + (address->inPayload ? " in the payload" : " in the name");
}

TEST_F(HearingTest, APayloadOfFewerThanSixOctetsSaysNothingAndHidesTheName) {
    AdvertisingReport report = withPayload();
    EXPECT_EQ(said(report), "02:4E:43:00:00:01 in the payload");
    report.manufacturerData->pop_back();
    report.name = "QX024E43000001";
    EXPECT_EQ(said(report), "none");
}

TEST_F(HearingTest, ANameSaysTheAddressOnlyBesideManufacturerDataOfAnotherCompany) {
    AdvertisingReport report = withName("QX024e43000001");
    EXPECT_EQ(said(report), "02:4e:43:00:00:01 in the name");
    report.manufacturerData = {0xFF, 0x00, 1, 2, 3, 4, 5, 6};
    EXPECT_EQ(said(report), "02:4e:43:00:00:01 in the name");
    report.manufacturerData.reset();
    EXPECT_EQ(said(report), "none");
    report = withPayload();
    report.name = "QX024E43000002";
    EXPECT_EQ(said(report), "02:4E:43:00:00:01 in the payload");
}

TEST_F(HearingTest, ANameIsReadAsTheManagerReadsItWhereTheServiceIsCarried) {
    EXPECT_EQ(said(withName("QX024E4300000")), "none");
    EXPECT_EQ(said(withName("QX024E4300000G")), "02:4E:43:00:00:0G in the name");
    EXPECT_EQ(said(withName("QY024E43000001")), "02:4E:43:00:00:01 in the name");
    EXPECT_EQ(said(withName("Bar")), "Bar in the name");
}

TEST_F(HearingTest, WithoutTheServiceOnlyTheFormOfADongleCounts) {
    const auto withoutService = [](AdvertisingReport report) {
        report.services.clear();
        return report;
    };
    EXPECT_EQ(said(withoutService(withPayload())), "02:4E:43:00:00:01 in the payload");
    EXPECT_EQ(said(withoutService(withName("QX024E43000001"))), "02:4E:43:00:00:01 in the name");
    EXPECT_EQ(said(withoutService(withName("Somebody's telephone"))), "none");
    hear(withoutService(withName("Somebody's telephone")));
    EXPECT_EQ(result().foreign, 1U);
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

TEST_F(HearingTest, ThreeReportsOfASenderWithinFiveSecondsAreRepeats) {
    AdvertisingReport report = withPayload();
    report.address = sender;
    hear(report, 0);
    hear(report, 100);
    EXPECT_FALSE(result().repeats);
    hear(report, 5000);
    EXPECT_FALSE(result().repeats);
    hear(report, 5099);
    EXPECT_TRUE(result().repeats);
    EXPECT_EQ(result().senders, 1U);
}

TEST_F(HearingTest, ReportsOfSeveralSendersAndAnswersToScanRequestsAreNoRepeats) {
    AdvertisingReport report = withPayload();
    for (std::uint8_t last = 0; last < 3; ++last) {
        report.address = DeviceAddress{0xC4, 0xF7, 0xC1, 0x4C, 0xC1, last};
        report.scanResponse = false;
        hear(report, last);
        report.scanResponse = true;
        hear(report, last + 10);
        hear(report, last + 20);
    }
    EXPECT_FALSE(result().repeats);
    EXPECT_EQ(result().senders, 3U);
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
