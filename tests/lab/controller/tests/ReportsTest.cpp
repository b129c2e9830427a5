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
