// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdStructures.h"
#include "platform/hciformat/HciEvents.h"
#include "platform/hciformat/ReportEvents.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {
namespace {

std::vector<Octets> eventsOf(const AdvertisingReport& report) {
    std::vector<Octets> events;
    writeReportEvents(report, [&](auto event) { events.emplace_back(event.begin(), event.end()); });
    return events;
}

/// The reports that a reader makes of a report's events.
std::vector<AdvertisingReport> readBack(const AdvertisingReport& report) {
    std::vector<AdvertisingReport> reports;
    HciEvents reader;
    for (const Octets& event : eventsOf(report)) {
        const auto outcome = reader.read(event, [&](const RawReport& raw) {
            AdvertisingReport read;
            read.address = raw.address;
            read.addressType = raw.addressType;
            read.scanResponse = raw.scanResponse;
            read.RSSI = raw.RSSI;
            EXPECT_EQ(readAdStructures(raw.data, read), std::nullopt);
            reports.push_back(std::move(read));
        });
        EXPECT_EQ(outcome, HciEvents::Outcome::whole);
    }
    return reports;
}

AdvertisingReport reportWithName(std::size_t characters) {
    AdvertisingReport report;
    report.address = alice;
    report.addressType = 1;
    report.RSSI = -61;
    report.name = std::string(characters, 'n');
    return report;
}

TEST(ReportEvents, AShortReportOfAKnownSenderIsALegacyEvent) {
    AdvertisingReport report;
    report.address = alice;
    report.manufacturerData = hex("FFFF 01");
    report.RSSI = -61;
    EXPECT_EQ(eventsOf(report), std::vector<Octets>(1, hex("3E 11 02 01 03 00 151413 1211A1 05 04FFFFFF01 C3")));
}

TEST(ReportEvents, ThirtyOneOctetsOfDataAreTheMostOfALegacyEvent) {
    EXPECT_EQ(eventsOf(reportWithName(29)).at(0).at(2), 0x02);
    EXPECT_EQ(eventsOf(reportWithName(30)).at(0).at(2), 0x0D);
}

TEST(ReportEvents, ReportsOfEitherKindAreReadAgain) {
    for (const std::size_t characters : {29U, 30U}) {
        AdvertisingReport report = reportWithName(characters);
        report.scanResponse = true;
        const auto read = readBack(report);
        ASSERT_EQ(read.size(), 1U);
        EXPECT_EQ(read[0].address, report.address);
        EXPECT_EQ(read[0].addressType, 1);
        EXPECT_TRUE(read[0].scanResponse);
        EXPECT_EQ(read[0].RSSI, -61);
        EXPECT_EQ(read[0].name, report.name);
    }
}

TEST(ReportEvents, ASenderThatIsNotKnownIsAnonymous) {
    AdvertisingReport report = reportWithName(3);
    report.address.reset();
    const auto read = readBack(report);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].address, std::nullopt);
    EXPECT_EQ(read[0].name, "nnn");
}

TEST(ReportEvents, DataBeyondOneEventComesInPieces) {
    AdvertisingReport report = reportWithName(227);
    EXPECT_EQ(eventsOf(report).size(), 1U);
    EXPECT_EQ(eventsOf(report).at(0).size(), 2U + 255);
    report = reportWithName(228);
    EXPECT_EQ(eventsOf(report).size(), 2U);
    const auto read = readBack(report);
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].name, report.name);
}

TEST(ReportEvents, ASignalBeyondAnOctetIsTheNearestThatItHolds) {
    for (const auto& [RSSI, written] :
         std::vector<std::pair<int, int>>{{127, 127}, {128, 127}, {-128, -128}, {-129, -128}}) {
        AdvertisingReport report = reportWithName(1);
        report.RSSI = RSSI;
        EXPECT_EQ(readBack(report).at(0).RSSI, written);
    }
}

}  // namespace
}  // namespace nearcast
