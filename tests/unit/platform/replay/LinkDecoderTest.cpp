// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/CaptureReader.h"

#include "unit/platform/replay/SnifferBytes.h"

#include <gtest/gtest.h>

#include <vector>

namespace nearcast::replay {

namespace {

struct Decoder {
    LinkDecoder decoder;
    std::vector<RawReport> heard;  // without the data

    void read(PacketKind kind, const Octets& bytes, std::uint32_t flags = 0) {
        Packet packet;
        packet.kind = kind;
        packet.flags = flags;
        packet.bytes = bytes;
        decoder.read(packet, [this](const RawReport& report) {
            heard.push_back(report);
            heard.back().data = {};
        });
    }
};

/// How many reports a packet gives.
std::size_t count(PacketKind kind, const Octets& bytes, std::uint32_t flags = 0) {
    Decoder decoder;
    decoder.read(kind, bytes, flags);
    return decoder.heard.size();
}

const Octets event = legacyEvent({{.address = alice, .RSSI = -60}});
const Octets packet = legacyPDU(ADV_IND, alice, hex("020106"));

TEST(LinkDecoder, ReadsUARTPacketsByTheirIndicator) {
    EXPECT_EQ(count(PacketKind::hciUART, hex("04") + event), 1U);
    for (const char* other : {"01", "02", "03", "05", "00"}) {
        EXPECT_EQ(count(PacketKind::hciUART, hex(other) + event), 0U) << other;
    }
}

TEST(LinkDecoder, ReadsUARTPacketsBehindADirection) {
    EXPECT_EQ(count(PacketKind::hciUARTDirection, hex("00000001 04") + event), 1U);
    EXPECT_EQ(count(PacketKind::hciUARTDirection, hex("00000000 04") + event), 1U);
    EXPECT_EQ(count(PacketKind::hciUARTDirection, hex("00000001 02") + event), 0U);
    EXPECT_EQ(count(PacketKind::hciUARTDirection, hex("04") + event), 0U);
}

TEST(LinkDecoder, ReadsMonitorPacketsByTheirOpcode) {
    for (std::uint64_t opcode = 0; opcode < 20; ++opcode) {
        EXPECT_EQ(count(PacketKind::monitor, hex("0001") + big(opcode, 2) + event), opcode == 3 ? 1U : 0U) << opcode;
        EXPECT_EQ(count(PacketKind::monitorByFlags, event, static_cast<std::uint32_t>(0x10000 | opcode)),
                  opcode == 3 ? 1U : 0U)
            << opcode;
    }
}

TEST(LinkDecoder, ReadsNothingOutOfPacketsOfNoKnownKind) {
    EXPECT_EQ(count(PacketKind::unknown, hex("04") + event), 0U);
    EXPECT_EQ(count(PacketKind::unknown, event), 0U);
}

struct InfoCase {
    const char* description;
    Info info;
    std::size_t reports;
};

TEST(LinkDecoder, BelievesADescriptionOnlyWhereItsFlagsSay) {
    const InfoCase cases[] = {
        {"checksum right", {.flags = 0x0C01}, 1},
        {"checksum not checked", {.flags = 0x0001}, 1},
        {"checksum wrong", {.flags = 0x0401}, 0},
        {"still whitened", {.flags = 0x0C00}, 0},
        {"auxiliary advertisement", {.flags = 0x0C81}, 1},
        {"data of a connection", {.flags = 0x0D01}, 0},
        {"data of a connection, the other way", {.flags = 0x0D81}, 0},
        {"broadcast isochronous", {.flags = 0x0F01}, 0},
        {"2M", {.flags = 0x4C01}, 1},
        {"coded, without a coding indicator", {.flags = 0x8C01}, 0},
    };
    for (const InfoCase& one : cases) {
        EXPECT_EQ(count(PacketKind::lowEnergyWithInfo, one.info.before(packet)), one.reports) << one.description;
    }
}

TEST(LinkDecoder, TakesTheSignalFromTheDescriptionWhereItIsValid) {
    Decoder decoder;
    for (const int signal : {-128, -60, 0, 12}) {
        decoder.read(PacketKind::lowEnergyWithInfo, Info{.signal = signal}.before(packet));
        EXPECT_EQ(decoder.heard.back().RSSI, signal);
    }
    decoder.read(PacketKind::lowEnergyWithInfo, Info{.flags = 0x0C01}.before(packet));
    EXPECT_EQ(decoder.heard.back().RSSI, noRSSI);
}

TEST(LinkDecoder, FindsThePacketBehindACodingIndicator) {
    Octets coded = packet;
    coded.insert(coded.begin() + 4, 0x01);
    EXPECT_EQ(count(PacketKind::lowEnergyWithInfo, Info{.flags = 0x8C01}.before(coded)), 1U);
    EXPECT_EQ(count(PacketKind::nordicSniffer, Nordic{.flags = 0x21}.before(coded)), 1U);
}

struct NordicCase {
    const char* description;
    Nordic header;
    std::size_t reports;
};

TEST(LinkDecoder, ReadsTheNordicSniffersHeaderInItsVersions) {
    const NordicCase cases[] = {
        {"version 1", {.version = 1, .identifier = 6}, 1},
        {"version 2", {.version = 2, .identifier = 6}, 1},
        {"version 3", {.version = 3, .identifier = 2}, 1},
        {"version 3, data of a connection", {.version = 3, .identifier = 6}, 0},
        {"version 2, a ping", {.version = 2, .identifier = 0x0D}, 0},
        {"checksum wrong", {.flags = 0}, 0},
    };
    for (const NordicCase& one : cases) {
        EXPECT_EQ(count(PacketKind::nordicSniffer, one.header.before(packet)), one.reports) << one.description;
    }
}

TEST(LinkDecoder, TakesTheSignalFromTheNordicSniffersHeader) {
    Decoder decoder;
    for (const int attenuation : {0, 60, 255}) {
        decoder.read(PacketKind::nordicSniffer, Nordic{.attenuation = attenuation}.before(packet));
        EXPECT_EQ(decoder.heard.back().RSSI, -attenuation);
    }
}

TEST(LinkDecoder, TellsAuxiliaryPacketsByChannelAndType) {
    const Octets response = ExtendedPDU{.address = alice, .data = hex("020106")}.octets();
    const auto heard = [&](PacketKind kind, const Octets& bytes) {
        Decoder decoder;
        decoder.read(kind, bytes);
        return decoder.heard;
    };
    // Types: 0 advertisement, 1 chain, 2 periodic, 3 scan response. A chain without its begin gives nothing.
    for (int type = 0; type < 4; ++type) {
        const auto info =
            heard(PacketKind::lowEnergyWithInfo, Info{.channel = 7, .flags = 0x0C81 | type << 12}.before(response));
        const auto nordic =
            heard(PacketKind::nordicSniffer, Nordic{.flags = 1 | type << 1, .channel = 36}.before(response));
        ASSERT_EQ(info.size(), type == 0 || type == 3 ? 1U : 0U) << type;
        ASSERT_EQ(nordic.size(), info.size()) << type;
        if (info.empty()) continue;
        EXPECT_EQ(info[0].scanResponse, type == 3);
        EXPECT_EQ(nordic[0].scanResponse, type == 3);
    }
}

TEST(LinkDecoder, KnowsThePrimaryChannelsByFrequency) {
    // More is to come, so on a primary channel nothing is reported; on a secondary one it is the begin of a chain.
    const Octets begin = ExtendedPDU{.address = alice, .identifier = 1, .auxiliaryOffset = 9}.octets();
    for (int channel = 0; channel < 40; ++channel) {
        Decoder decoder;
        decoder.read(PacketKind::lowEnergyWithInfo, Info{.channel = channel}.before(begin));
        decoder.read(PacketKind::lowEnergyWithInfo,
                     Info{.channel = 5, .flags = 0x1C83}.before(ExtendedPDU{.identifier = 1}.octets()));
        const bool primary = channel == 0 || channel == 12 || channel == 39;
        EXPECT_EQ(decoder.heard.size(), primary ? 0U : 1U) << channel;
    }
}

TEST(LinkDecoder, ReadsNothingOutOfCutPackets) {
    const struct {
        PacketKind kind;
        Octets bytes;
        std::size_t needed;
    } cases[] = {
        {PacketKind::hciUART, hex("04") + event, event.size() + 1},
        {PacketKind::hciUARTDirection, hex("00000001 04") + event, event.size() + 5},
        {PacketKind::monitor, hex("0000 0003") + event, event.size() + 4},
        {PacketKind::lowEnergyWithInfo, Info{}.before(packet), 10 + packet.size() - 3},
        {PacketKind::nordicSniffer, Nordic{}.before(packet), 17 + packet.size() - 3},
    };
    for (const auto& one : cases) {
        for (std::size_t length = 0; length <= one.bytes.size(); ++length) {
            const Octets cut(one.bytes.begin(), one.bytes.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_EQ(count(one.kind, cut), length < one.needed ? 0U : 1U)
                << static_cast<int>(one.kind) << " " << length;
        }
    }
}

}  // namespace

}  // namespace nearcast::replay
