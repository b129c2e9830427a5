// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Reports.h"

#include "platform/hciformat/HciEvents.h"

#include <gtest/gtest.h>

namespace nearcast::lab {

namespace {

Dongle exampleDongle() {
    Dongle dongle;
    dongle.address = {0xc0, 1, 2, 3, 4, 5};
    dongle.payload = Bytes{0x02, 0x4e, 0x43, 0, 0, 1};
    dongle.localName = "Nearcast";
    return dongle;
}

Bytes reportEvent(const Dongle& dongle, int rssi, bool extended, bool scanResponse) {
    const std::vector<Bytes> events = reportEvents(dongle, rssi, extended, scanResponse);
    EXPECT_EQ(events.size(), 1U);
    return events.front();
}

TEST(Reports, FillALegacyAdvertisementToItsLastOctet) { EXPECT_EQ(advertisingData(exampleDongle()).size(), 31U); }

TEST(Reports, HaveTheSignalLastInALegacyReport) {
    const Bytes event = reportEvent(exampleDongle(), -60, false, false);
    ASSERT_EQ(event.size(), 2U + event[1]);
    EXPECT_EQ((Bytes{event.begin(), event.begin() + 12}), (Bytes{0x3e, 43, 0x02, 1, 3, 0, 5, 4, 3, 2, 1, 0xc0}));
    EXPECT_EQ(static_cast<std::int8_t>(event.back()), -60);
}

TEST(Reports, HaveTheTypeOfTheAdvertisement) {
    Dongle dongle = exampleDongle();
    constexpr std::size_t type = 4;
    EXPECT_EQ(reportEvent(dongle, -60, true, false).at(type), 0x10);
    dongle.advertising = Advertising::connectable;
    EXPECT_EQ(reportEvent(dongle, -60, false, false).at(type), 0x00);
    EXPECT_EQ(reportEvent(dongle, -60, false, true).at(type), 0x04);
    EXPECT_EQ(reportEvent(dongle, -60, true, false).at(type), 0x13);
    EXPECT_EQ(reportEvent(dongle, -60, true, true).at(type), 0x1b);
    dongle.advertising = Advertising::scannable;
    EXPECT_EQ(reportEvent(dongle, -60, false, false).at(type), 0x02);
    EXPECT_EQ(reportEvent(dongle, -60, true, true).at(type), 0x1a);
}

TEST(Reports, SayWhatTheyAreToldOctetByOctet) {
    Dongle dongle = exampleDongle();
    dongle.data = Bytes{0x01, 0x02};
    dongle.response = Bytes();
    EXPECT_EQ(advertisingData(dongle), (Bytes{0x01, 0x02}));
    EXPECT_TRUE(scanResponseData(dongle).empty());
    constexpr std::size_t addressType = 5;
    EXPECT_EQ(reportEvent(dongle, -60, false, false).at(addressType), 0x00);
    dongle.random = true;
    EXPECT_EQ(reportEvent(dongle, -60, false, false).at(addressType), 0x01);
}

TEST(Reports, ComeInPiecesWhereAnEventIsTooShort) {
    Dongle dongle = exampleDongle();
    dongle.extended = true;
    for (const std::size_t size : {229U, 230U, 458U, 459U}) {
        dongle.data = Bytes(size, 0x00);
        dongle.data->back() = 0x77;
        HciEvents events;
        Bytes heard;
        int reports = 0;
        const std::vector<Bytes> pieces = reportEvents(dongle, -60, true, false);
        EXPECT_EQ(pieces.size(), (size + 228) / 229) << size;
        for (const Bytes& piece : pieces) {
            EXPECT_EQ(heard.size(), 0U);
            events.read(piece, [&](const RawReport& report) {
                ++reports;
                heard.assign(report.data.begin(), report.data.end());
            });
        }
        EXPECT_EQ(reports, 1);
        EXPECT_EQ(heard, dongle.data);
    }
}

class ReadBack : public testing::TestWithParam<bool> {};

TEST_P(ReadBack, AReportIsUnderstoodByTheLibrary) {
    HciEvents events;
    int count = 0;
    const auto outcome =
        events.read(reportEvent(exampleDongle(), -60, GetParam(), false), [&](const RawReport& report) {
            ++count;
            EXPECT_EQ(report.RSSI, -60);
            EXPECT_EQ(Bytes(report.data.begin(), report.data.end()), advertisingData(exampleDongle()));
        });
    EXPECT_EQ(outcome, HciEvents::Outcome::whole);
    EXPECT_EQ(count, 1);
}

INSTANTIATE_TEST_SUITE_P(Both, ReadBack, testing::Bool(),
                         [](const auto& kind) { return kind.param ? "Extended" : "Legacy"; });

}  // namespace

}  // namespace nearcast::lab
