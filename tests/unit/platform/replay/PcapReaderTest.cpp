// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::replay {

namespace {

using Times = std::vector<std::int64_t>;

const Octets packet = H4(legacyEvent({{.address = alice, .RSSI = -60}}));

TEST(PcapReader, ReadsBothByteOrders) {
    for (const Order order : {Order::little, Order::big}) {
        const Contents contents = readAll(pcapHeader(187, order) + pcapRecord(1000, 999'999, packet, order) +
                                          pcapRecord(1001, 0, packet, order) + pcapRecord(1002, 500, packet, order));
        EXPECT_FALSE(contents.damagedAt);
        EXPECT_EQ(contents.times(), (Times{0, 1, 1'000'501}));
        EXPECT_EQ(contents.reports().front().report.address, alice);
    }
}

TEST(PcapReader, RoundsNanosecondsToWholeMicroseconds) {
    for (const Order order : {Order::little, Order::big}) {
        const Contents contents = readAll(pcapHeader(187, order, pcapNanoseconds) + pcapRecord(7, 100, packet, order) +
                                          pcapRecord(7, 599, packet, order) + pcapRecord(7, 600, packet, order) +
                                          pcapRecord(8, 100, packet, order));
        EXPECT_EQ(contents.times(), (Times{0, 0, 1, 1'000'000}));
    }
}

TEST(PcapReader, ReadsTheLinkTypeFromItsHalfOfTheField) {
    EXPECT_EQ(readAll(pcapHeader(0x24000000 | 187) + pcapRecord(0, 0, packet)).items.size(), 1U);
}

TEST(PcapReader, RefusesOtherVersionsAndLinkTypesByName) {
    Octets version = pcapHeader(187);
    version[4] = 3;
    const struct {
        Octets file;
        const char* message;
    } cases[] = {
        {version, "test: pcap version 3 is not known (known: 2)"},
        {pcapHeader(1), "test: link type 1 is not known (known: 187, 201, 254, 256, 272)"},
        {pcapHeader(251), "test: link type 251 is not known (known: 187, 201, 254, 256, 272)"},
    };
    for (const auto& one : cases) {
        try {
            openRecording(sourceOf(one.file), "test");
            ADD_FAILURE() << one.message;
        } catch (const NoRecording& error) {
            EXPECT_STREQ(error.what(), one.message);
        }
    }
}

TEST(PcapReader, TakesAPacketOfMoreThanALimitForDamage) {
    const Octets good = pcapHeader(187) + pcapRecord(0, 0, packet);
    EXPECT_FALSE(readAll(good + pcapRecord(0, 0, Octets(262144, 0))).damagedAt);
    const Contents contents = readAll(good + pcapRecord(0, 0, Octets(262145, 0)));
    EXPECT_EQ(contents.items.size(), 1U);
    EXPECT_EQ(contents.damagedAt, good.size());
}

TEST(PcapReader, MakesTheBestOfFractionsOfMoreThanASecond) {
    const Contents contents = readAll(pcapHeader(187) + pcapRecord(0, 0, packet) + pcapRecord(0, 0xFFFFFFFF, packet));
    EXPECT_EQ(contents.times(), (Times{0, 0xFFFFFFFF}));
}

}  // namespace

}  // namespace nearcast::replay
