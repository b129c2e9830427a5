// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

namespace nearcast::replay {

namespace {

using Times = std::vector<std::int64_t>;

const Octets packet = H4(legacyEvent({{.address = alice, .RSSI = -60}}));
const Pcapng littleEndian{Order::little};
const Pcapng bigEndian{Order::big};

TEST(PcapngReader, ReadsBothByteOrders) {
    for (const Pcapng& file : {littleEndian, bigEndian}) {
        const std::uint64_t start = 1'646'745'455'923'245;
        const Contents contents = readAll(file.section() + file.interface(187) + file.enhanced(start, packet) +
                                          file.enhanced(start + 250, packet));
        EXPECT_FALSE(contents.damagedAt) << contents.damage;
        EXPECT_EQ(contents.times(), (Times{0, 250}));
        EXPECT_EQ(contents.reports().front().report.address, alice);
    }
}

TEST(PcapngReader, ReadsSectionsOfDifferentByteOrdersWithInterfacesOfTheirOwn) {
    const Octets first = littleEndian.section() + littleEndian.interface(187) + littleEndian.enhanced(100, packet);
    const Octets second =
        bigEndian.section() + bigEndian.interface(201) + bigEndian.enhanced(107, hex("00000001") + packet);
    const Contents contents = readAll(first + second);
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.times(), (Times{0, 7}));
}

TEST(PcapngReader, ForgetsTheInterfacesOfTheLastSection) {
    const Octets good = littleEndian.section() + littleEndian.interface(187) + littleEndian.section();
    const Contents contents = readAll(good + littleEndian.enhanced(0, packet));
    EXPECT_EQ(contents.damagedAt, good.size());
    EXPECT_NE(contents.damage.find("interface 0, which is not described"), std::string::npos) << contents.damage;
}

TEST(PcapngReader, ReadsSeveralInterfacesEachInItsOwnWay) {
    const Pcapng& file = littleEndian;
    const Octets nanoseconds = file.option(2, octetsOf("name")) + file.option(9, hex("09")) + file.option(0, {});
    const Octets shifted = file.option(9, hex("83")) + file.option(14, little(10, 8));
    const Contents contents =
        readAll(file.section() + file.interface(187) + file.interface(1) + file.interface(201, nanoseconds) +
                file.interface(254, shifted) + file.enhanced(1'000'000, packet, 0) +
                file.enhanced(1'000'001, packet, 1) + file.enhanced(2'000'000'499, hex("00000001") + packet, 2) +
                file.enhanced(2'000'000'500, hex("00000001") + packet, 2) +
                file.enhanced(4, hex("00000003") + Octets(packet.begin() + 1, packet.end()), 3));
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.times(), (Times{0, 1'000'000, 1'000'001, 9'500'000}));
}

TEST(PcapngReader, ReadsObsoletePackets) {
    for (const Pcapng& file : {littleEndian, bigEndian}) {
        const Contents contents = readAll(file.section() + file.interface(1) + file.interface(187) +
                                          file.obsolete(40, packet, 1) + file.obsolete(47, packet, 1));
        EXPECT_EQ(contents.times(), (Times{0, 7}));
    }
}

TEST(PcapngReader, LetsSimplePacketsHappenWithTheirPredecessors) {
    const Pcapng& file = littleEndian;
    const Contents contents =
        readAll(file.section() + file.interface(187) + file.simple(packet, packet.size()) + file.enhanced(40, packet) +
                file.enhanced(47, packet) + file.simple(packet, packet.size()));
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.times(), (Times{0, 0, 7, 7}));
}

TEST(PcapngReader, CutsSimplePacketsWhereTheirInterfaceDid) {
    const Pcapng& file = littleEndian;
    const auto snap = static_cast<std::uint32_t>(packet.size());
    const Contents whole =
        readAll(file.section() + file.interface(187, {}, snap) + file.simple(packet, packet.size() + 100));
    EXPECT_EQ(whole.items.size(), 1U);
    const Octets cutPacket(packet.begin(), packet.end() - 1);
    const Contents cut =
        readAll(file.section() + file.interface(187, {}, snap - 1) + file.simple(cutPacket, packet.size()));
    EXPECT_FALSE(cut.damagedAt) << cut.damage;
    EXPECT_TRUE(cut.items.empty());
}

TEST(PcapngReader, PassesOverOtherBlocksOfAnyLength) {
    const Pcapng& file = littleEndian;
    const Contents contents =
        readAll(file.section() + file.block(4, octetsOf("names")) + file.interface(187) + file.block(5, {}) +
                file.block(0x80000BAD, Octets(3'000'000, 7)) + file.enhanced(5, packet));
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.items.size(), 1U);
}

Octets changed(Octets octets, std::size_t place, int value) {
    octets[place] = static_cast<std::uint8_t>(value);
    return octets;
}

struct DamageCase {
    Octets tail;
    const char* problem;
};

TEST(PcapngReader, NamesWhatIsDamagedAndWhere) {
    const Pcapng& file = littleEndian;
    const Octets good = file.section() + file.interface(187) + file.enhanced(0, packet);
    const Octets block = file.enhanced(1, packet);
    const DamageCase cases[] = {
        {changed(block, 4, 8), "a block of 8 bytes"},
        {changed(block, 4, block[4] + 1), "a block of 49 bytes"},
        {changed(block, 4, 0xFC), "the file ends inside what begins here"},
        {changed(block, 7, 0x7F), "a block of 2130706480 bytes"},
        {changed(block, block.size() - 4, 8), "a block whose two lengths differ"},
        {changed(file.block(77, {}), 8, 8), "a block whose two lengths differ"},
        {changed(block, 20, 0xFF), "a packet longer than its block"},
        {changed(block, 8, 1), "a packet of interface 1, which is not described"},
        {changed(file.section(), 8, 0), "a section without a byte order"},
        {file.section(2), "a section of the unknown version 2"},
        {file.block(1, hex("BB00")), "an interface without its fields"},
        {file.block(3, hex("FFFFFF")), "a packet longer than its block"},
        {hex("06000000 20000000"), "the file ends inside a block's frame"},
    };
    for (const DamageCase& one : cases) {
        const Contents contents = readAll(good + one.tail);
        EXPECT_EQ(contents.damage, "damaged at byte " + std::to_string(good.size()) + ": " + one.problem);
        EXPECT_EQ(contents.items.size(), 1U) << one.problem;
    }
}

TEST(PcapngReader, SaysSoWhenNoInterfaceCarriesAdvertisements) {
    const Pcapng& file = littleEndian;
    const Octets foreign = file.section() + file.interface(1) + file.interface(251) + file.enhanced(0, packet);
    const Contents contents = readAll(foreign);
    EXPECT_EQ(contents.damage, "damaged at byte 28: link type 1 is not known (known: 187, 201, 254, 256, 272)");
    EXPECT_FALSE(readAll(foreign + file.interface(187)).damagedAt);
    EXPECT_FALSE(readAll(file.section()).damagedAt);
}

TEST(PcapngReader, BelievesNoCutOption) {
    const Pcapng& file = littleEndian;
    // The resolution's value is missing: the block ends behind its length.
    const Octets interface = file.interface(187, little(9, 2) + little(1, 2));
    const Contents contents = readAll(file.section() + interface + file.enhanced(0, packet) + file.enhanced(7, packet));
    EXPECT_EQ(contents.times(), (Times{0, 7}));
}

}  // namespace

}  // namespace nearcast::replay
