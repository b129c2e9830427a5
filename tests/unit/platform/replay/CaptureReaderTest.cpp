// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/CaptureReader.h"

#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

#include <limits>

namespace nearcast::replay {

namespace {

using Times = std::vector<std::int64_t>;

/// Packets that carry one report each.
class Packets : public PacketSource {
public:
    explicit Packets(std::vector<std::optional<std::int64_t>> nanoseconds) : nanoseconds_(std::move(nanoseconds)) {}

    std::optional<Packet> next() override {
        if (place_ == nanoseconds_.size()) return std::nullopt;
        return Packet{nanoseconds_[place_++], PacketKind::hciUART, 0, bytes_};
    }

private:
    std::vector<std::optional<std::int64_t>> nanoseconds_;
    std::size_t place_ = 0;
    Octets bytes_ = H4(legacyEvent({{}}));
};

Times timesOf(std::vector<std::optional<std::int64_t>> nanoseconds) {
    CaptureReader reader(std::make_unique<Packets>(std::move(nanoseconds)));
    return readAll(reader).times();
}

TEST(CaptureReader, CountsTimeFromTheFirstPacketOfAnyKind) {
    const Contents contents = readAll(btsnoopHeader(1002) + btsnoopRecord(100, hex("01 03 0C 00"), 2) +
                                      btsnoopRecord(107, H4(legacyEvent({{}}))));
    EXPECT_EQ(contents.times(), Times{7});
}

TEST(CaptureReader, RoundsToTheNearestMicrosecond) {
    EXPECT_EQ(timesOf({0, 499, 500, 1'499, 1'500}), (Times{0, 0, 1, 1, 2}));
    EXPECT_EQ(timesOf({300, 799, 800}), (Times{0, 0, 1}));
}

TEST(CaptureReader, NeverGoesBack) {
    EXPECT_EQ(timesOf({5'000, 9'000, 8'000, 1'000, 9'000, 10'000}), (Times{0, 4, 4, 4, 4, 5}));
}

TEST(CaptureReader, LetsPacketsWithoutATimeHappenWithTheirPredecessors) {
    EXPECT_EQ(timesOf({std::nullopt, 5'000, std::nullopt, 9'000, std::nullopt}), (Times{0, 0, 0, 4, 4}));
}

TEST(CaptureReader, SurvivesAnyTwoTimes) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t latest = 4'000'000'000'000'000;  // microseconds
    EXPECT_EQ(timesOf({0, most, 0}), (Times{0, latest, latest}));
    EXPECT_EQ(timesOf({-1, most}), (Times{0, 0}));  // 292 years are the most that can be told apart
    EXPECT_EQ(timesOf({most, least}), (Times{0, 0}));
    EXPECT_EQ(timesOf({least, most}), (Times{0, 0}));
}

TEST(CaptureReader, KeepsTheReportsOfOneEventInOrderAndTogether) {
    const Octets event =
        legacyEvent({{.address = alice, .RSSI = -1}, {.address = bob, .RSSI = -2}, {.address = alice, .RSSI = -3}});
    const auto reports =
        readAll(btsnoopHeader(1002) + btsnoopRecord(0, H4(event)) + btsnoopRecord(5, H4(event))).reports();
    ASSERT_EQ(reports.size(), 6U);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(reports[i].report.RSSI, -1 - static_cast<int>(i % 3));
        EXPECT_EQ(reports[i].at.count(), i < 3 ? 0 : 5);
    }
}

TEST(CaptureReader, TellsWhoSentAndWhetherItWasAResponse) {
    const Octets event = legacyEvent({{.address = alice, .addressType = 1}, {.type = 4, .address = bob}});
    const auto reports = readAll(btsnoopHeader(1002) + btsnoopRecord(0, H4(event))).reports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].report.address, alice);
    EXPECT_EQ(reports[0].report.addressType, 1);
    EXPECT_FALSE(reports[0].report.scanResponse);
    EXPECT_EQ(reports[1].report.address, bob);
    EXPECT_TRUE(reports[1].report.scanResponse);
}

TEST(CaptureReader, CountsAMalformedReportWithWhatPrecedesTheBreak) {
    const Octets data = structure(0xFF, hex("FFFF 010203040506")) + hex("05 09 41");
    const auto reports = readAll(btsnoopHeader(1002) + btsnoopRecord(0, H4(legacyEvent({{.data = data}})))).reports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].malformed);
    EXPECT_EQ(reports[0].report.manufacturerData, hex("FFFF 010203040506"));
    EXPECT_FALSE(reports[0].report.name);
}

TEST(CaptureReader, RemembersTheNameOfAScanResponse) {
    const Octets advertisement = legacyEvent({{.address = alice, .data = hex("02 01 06")}});
    const Octets response = legacyEvent({{.type = 4, .address = alice, .data = structure(0x09, octetsOf("QX1"))}});
    const auto reports = readAll(btsnoopHeader(1002) + btsnoopRecord(0, H4(advertisement)) +
                                 btsnoopRecord(1, H4(response)) + btsnoopRecord(2, H4(advertisement)))
                             .reports();
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_FALSE(reports[0].report.name);
    EXPECT_EQ(reports[1].report.name, "QX1");
    EXPECT_EQ(reports[2].report.name, "QX1");
}

TEST(CaptureReader, RemembersAcrossLegacyAndExtendedEvents) {
    const Octets response = extendedEvent({{.type = 0x1B, .address = alice, .data = structure(0x09, octetsOf("QX1"))}});
    const auto reports = readAll(btsnoopHeader(1002) + btsnoopRecord(1, H4(response)) +
                                 btsnoopRecord(2, H4(legacyEvent({{.address = alice}}))))
                             .reports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1].report.name, "QX1");
}

TEST(CaptureReader, MakesNamesWellFormed) {
    const Octets data = structure(0x09, octetsOf("a\xFFz"));
    const auto file = btsnoopHeader(1002) + btsnoopRecord(0, H4(legacyEvent({{.data = data}})));
    EXPECT_EQ(readAll(file).reports().at(0).report.name, "a\xEF\xBF\xBDz");
}

}  // namespace

}  // namespace nearcast::replay
