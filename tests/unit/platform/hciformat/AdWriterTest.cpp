// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdStructures.h"
#include "platform/hciformat/HciEvents.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

namespace nearcast {
namespace {

AdvertisingReport readBack(const AdvertisingReport& report) {
    AdvertisingReport read;
    EXPECT_EQ(readAdStructures(writeAdStructures(report), read), std::nullopt);
    return read;
}

TEST(AdWriter, ADonglesServicePayloadAndNameAreReadAgain) {
    AdvertisingReport report;
    report.services = {CBUUID::UUIDWithString("4F37D906-3F43-440C-98E0-9E709971CADF")};
    report.manufacturerData = hex("FFFF 024E43000001");
    report.name = "QX024E43000001";
    const AdvertisingReport read = readBack(report);
    EXPECT_EQ(read.services, report.services);
    EXPECT_EQ(read.manufacturerData, report.manufacturerData);
    EXPECT_EQ(read.name, report.name);
}

TEST(AdWriter, AReportThatSaysNothingHasNoStructures) { EXPECT_TRUE(writeAdStructures({}).empty()); }

TEST(AdWriter, ServicesTakeTheShortestForm) {
    AdvertisingReport report;
    report.services = {CBUUID::UUIDWithString("0000180F-0000-1000-8000-00805F9B34FB")};
    EXPECT_EQ(writeAdStructures(report), hex("03 03 0F18"));
    report.services = {CBUUID::UUIDWithString("12345678-0000-1000-8000-00805F9B34FB")};
    EXPECT_EQ(writeAdStructures(report), hex("05 05 78563412"));
}

TEST(AdWriter, ServicesOfSeveralSizesKeepTheirOrder) {
    AdvertisingReport report;
    report.services = {CBUUID::UUIDWithShort(0x180F), CBUUID::UUIDWithShort(0x180A),
                       CBUUID::UUIDWithString("4F37D906-3F43-440C-98E0-9E709971CADF"),
                       CBUUID::UUIDWithShort(0x12345678), CBUUID::UUIDWithShort(0x1800)};
    EXPECT_EQ(readBack(report).services, report.services);
}

TEST(AdWriter, AListOfServicesThatFillsAStructureGoesOnInTheNext) {
    AdvertisingReport report;
    for (std::uint32_t service = 0; service < 128; ++service) {  // 127 of them fill the 254 octets
        report.services.push_back(CBUUID::UUIDWithShort(0x1000 + service));
    }
    EXPECT_EQ(writeAdStructures(report).size(), 2U + 254 + 2 + 2);
    EXPECT_EQ(readBack(report).services, report.services);
}

TEST(AdWriter, WhatCannotBeSaidIsLeftOut) {
    AdvertisingReport report;
    report.name = "";
    report.manufacturerData = hex("FF");
    report.services = {CBUUID::UUIDWithString("a printer")};
    EXPECT_TRUE(writeAdStructures(report).empty());
}

TEST(AdWriter, ANameFillsAStructureAndIsCutBeyond) {
    AdvertisingReport report;
    report.name = std::string(254, 'n');
    EXPECT_EQ(readBack(report).name, report.name);
    report.name = std::string(255, 'n');
    EXPECT_EQ(readBack(report).name, std::string(254, 'n'));
}

TEST(AdWriter, NoMoreIsWrittenThanTheLongestAdvertisementHolds) {
    AdvertisingReport report;
    for (std::uint8_t service = 0; service < 120; ++service) {
        CBUUID::Bytes bytes{};
        bytes.fill(service);
        report.services.push_back(CBUUID::UUIDWithBytes(bytes));
    }
    EXPECT_LE(writeAdStructures(report).size(), ReportFragments::longestData);
    EXPECT_EQ(readBack(report).services.size(), 6U * 15);
}

}  // namespace
}  // namespace nearcast
