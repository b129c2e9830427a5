// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/PcapReader.h"

#include <algorithm>
#include <array>

namespace nearcast::replay {

namespace {

constexpr std::size_t fileHeader = 24;
constexpr std::size_t recordHeader = 16;

struct Magic {
    std::array<std::uint8_t, 4> bytes;
    PcapForm form;
};
constexpr Magic magics[] = {
    {{0xD4, 0xC3, 0xB2, 0xA1}, {ByteReader::Order::little, 1000}},
    {{0xA1, 0xB2, 0xC3, 0xD4}, {ByteReader::Order::big, 1000}},
    {{0x4D, 0x3C, 0xB2, 0xA1}, {ByteReader::Order::little, 1}},
    {{0xA1, 0xB2, 0x3C, 0x4D}, {ByteReader::Order::big, 1}},
};

PacketKind readHeader(RecordingInput& input, PcapForm form, const std::string& name) {
    ByteReader header(input.takeAll(fileHeader, 0), form.order);
    header.skip(4);
    const std::uint16_t major = header.u16();
    if (major != 2) {
        throw NoRecording(name + ": pcap version " + std::to_string(major) + " is not known (known: 2)");
    }
    header.skip(2 + 4 + 4 + 4);  // minor version, two unused fields, the length at which packets were cut
    const auto linkType = static_cast<std::uint16_t>(header.u32());  // the upper half speaks of Ethernet checksums
    const PacketKind kind = packetKindOfLinkType(linkType);
    if (kind != PacketKind::unknown) return kind;
    throw NoRecording(name + ": link type " + std::to_string(linkType) +
                      " is not known (known: 187, 201, 254, 256, 272)");
}

}  // namespace

PacketKind packetKindOfLinkType(std::uint16_t linkType) {
    switch (linkType) {
        case 187: return PacketKind::hciUART;
        case 201: return PacketKind::hciUARTDirection;
        case 254: return PacketKind::monitor;
        case 256: return PacketKind::lowEnergyWithInfo;
        case 272: return PacketKind::nordicSniffer;
        default: return PacketKind::unknown;
    }
}

std::optional<PcapForm> pcapForm(std::span<const std::uint8_t> begin) {
    for (const Magic& magic : magics) {
        const std::size_t count = std::min(begin.size(), magic.bytes.size());
        if (std::equal(begin.begin(), begin.begin() + static_cast<std::ptrdiff_t>(count), magic.bytes.begin())) {
            return magic.form;
        }
    }
    return std::nullopt;
}

PcapReader::PcapReader(RecordingInput& input, PcapForm form, const std::string& name)
    : input_(input), form_(form), kind_(readHeader(input, form, name)) {}

std::optional<Packet> PcapReader::next() {
    if (input_.atEnd()) return std::nullopt;
    const std::uint64_t start = input_.offset();
    ByteReader header(input_.takeAll(recordHeader, start), form_.order);
    const std::int64_t seconds = header.u32();
    const std::int64_t fraction = header.u32();
    const std::uint32_t length = header.u32();
    if (length > longestPacket) {
        throw RecordingDamage(start, "a packet of " + std::to_string(length) + " bytes");
    }
    Packet packet;
    packet.kind = kind_;
    packet.nanoseconds = seconds * 1'000'000'000 + fraction * form_.nanosecondsPerUnit;
    packet.bytes = input_.takeAll(length, start);
    return packet;
}

}  // namespace nearcast::replay
