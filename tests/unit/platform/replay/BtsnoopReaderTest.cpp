// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::replay {

namespace {

using Times = std::vector<std::int64_t>;

const Octets event = legacyEvent({{.address = alice, .RSSI = -60}});

TEST(BtsnoopReader, ReadsUARTPackets) {
    const Contents contents = readAll(btsnoopHeader(1002) + btsnoopRecord(0, hex("01 03 0C 00"), 2) +
                                      btsnoopRecord(1500, H4(event)) + btsnoopRecord(2500, H4(event)));
    EXPECT_FALSE(contents.damagedAt);
    EXPECT_EQ(contents.times(), (Times{1500, 2500}));
    EXPECT_EQ(contents.reports().front().report.address, alice);
    EXPECT_EQ(contents.reports().front().report.RSSI, -60);
}

TEST(BtsnoopReader, TellsUnencapsulatedEventsByTheirFlags) {
    const Contents contents =
        readAll(btsnoopHeader(1001) + btsnoopRecord(0, event, 0) + btsnoopRecord(1, event, 1) +
                btsnoopRecord(2, event, 2) + btsnoopRecord(3, event, 3) + btsnoopRecord(4, event, 0xFFFF0003));
    EXPECT_EQ(contents.times(), (Times{3, 4}));
}

TEST(BtsnoopReader, TellsMonitorEventsByTheirOpcode) {
    Octets file = btsnoopHeader(2001);
    for (std::uint32_t opcode = 0; opcode < 20; ++opcode) file = file + btsnoopRecord(opcode, event, opcode);
    file = file + btsnoopRecord(20, event, 0x00010003);  // of the second adapter
    EXPECT_EQ(readAll(file).times(), (Times{3, 20}));
}

TEST(BtsnoopReader, RefusesOtherVersionsAndDatalinksByName) {
    const struct {
        Octets file;
        const char* message;
    } cases[] = {
        {btsnoopHeader(1002, 2), "test: btsnoop version 2 is not known (known: 1)"},
        {btsnoopHeader(1003), "test: btsnoop datalink 1003 is not known (known: 1001, 1002, 2001)"},
        {btsnoopHeader(0xFFFFFFFF), "test: btsnoop datalink 4294967295 is not known (known: 1001, 1002, 2001)"},
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

TEST(BtsnoopReader, TakesAPacketOfMoreThanALimitForDamage) {
    const Octets good = btsnoopHeader(1002) + btsnoopRecord(0, H4(event));
    const Octets tooLong = big(262145, 4) + big(262145, 4) + big(3, 4) + big(0, 4) + big(btsnoop1970, 8);
    const Contents contents = readAll(good + tooLong + Octets(262145, 0));
    EXPECT_EQ(contents.items.size(), 1U);
    EXPECT_EQ(contents.damagedAt, good.size());
    EXPECT_EQ(contents.damage, "damaged at byte " + std::to_string(good.size()) + ": a packet of 262145 bytes");
    const Octets longest = btsnoopRecord(5, Octets(262144, 0));
    EXPECT_FALSE(readAll(good + longest).damagedAt);
}

TEST(BtsnoopReader, ReadsPacketsThatWereCutWhenTheyWereRecorded) {
    Octets cut = btsnoopRecord(0, Octets(10, 4));
    cut[3] = 200;  // its length before the cut
    const Contents contents = readAll(btsnoopHeader(1002) + cut + btsnoopRecord(7, H4(event)));
    EXPECT_FALSE(contents.damagedAt);
    EXPECT_EQ(contents.times(), Times{7});
}

TEST(BtsnoopReader, MeasuresTimeFromAnyMoment) {
    const auto record = [](std::uint64_t microseconds) { return btsnoopRecord(microseconds - btsnoop1970, H4(event)); };
    // In the year 0, in 1970, in 2022 and where 64 bits end.
    for (const std::uint64_t start :
         {std::uint64_t{0}, btsnoop1970, btsnoop1970 + 1646745455923245, ~std::uint64_t{9}}) {
        EXPECT_EQ(readAll(btsnoopHeader(1002) + record(start) + record(start + 7)).times(), (Times{0, 7}));
    }
}

}  // namespace

}  // namespace nearcast::replay
