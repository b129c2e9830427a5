// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/BtsnoopReader.h"

#include "platform/hciformat/ByteReader.h"

#include <stdexcept>

namespace nearcast::replay {

namespace {

constexpr std::size_t fileHeader = 16;
constexpr std::size_t recordHeader = 24;

PacketKind kindOfDatalink(std::uint32_t datalink, const std::string& name) {
    switch (datalink) {
        case 1001: return PacketKind::hciByFlags;
        case 1002: return PacketKind::hciUART;
        case 2001: return PacketKind::monitorByFlags;
        default:
            throw std::invalid_argument(name + ": btsnoop datalink " + std::to_string(datalink) +
                                        " is not known (known: 1001, 1002, 2001)");
    }
}

PacketKind readHeader(RecordingInput& input, const std::string& name) {
    ByteReader header(input.takeAll(fileHeader, 0), ByteReader::Order::big);
    header.skip(btsnoopMagic.size());
    const std::uint32_t version = header.u32();
    if (version != 1) {
        throw std::invalid_argument(name + ": btsnoop version " + std::to_string(version) + " is not known (known: 1)");
    }
    return kindOfDatalink(header.u32(), name);
}

std::int64_t nanosecondsOf(std::uint64_t microseconds) {
    // Times before 1970 are of clocks that were never set; only differences count, so the shift just keeps nanoseconds
    // within 64 bits. Unsigned, for a damaged file may hold any time; it wraps rather than overflows.
    return static_cast<std::int64_t>((microseconds - btsnoopEpoch) * 1000);
}

}  // namespace

BtsnoopReader::BtsnoopReader(RecordingInput& input, const std::string& name)
    : input_(input), kind_(readHeader(input, name)) {}

std::optional<Packet> BtsnoopReader::next() {
    if (input_.atEnd()) return std::nullopt;
    const std::uint64_t start = input_.offset();
    ByteReader header(input_.takeAll(recordHeader, start), ByteReader::Order::big);
    header.skip(4);  // the packet's length before it was cut
    const std::uint32_t length = header.u32();
    Packet packet;
    packet.kind = kind_;
    packet.flags = header.u32();
    header.skip(4);  // packets lost so far
    packet.nanoseconds = nanosecondsOf(header.u64());
    if (length > longestPacket) {
        throw RecordingDamage(start, "a packet of " + std::to_string(length) + " bytes");
    }
    packet.bytes = input_.takeAll(length, start);
    return packet;
}

}  // namespace nearcast::replay
