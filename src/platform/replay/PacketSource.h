// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace nearcast::replay {

/// What the bytes of a captured packet are.
enum class PacketKind {
    unknown,            ///< nothing that carries advertisements
    hciByFlags,         ///< an HCI packet; the record's flags tell which kind
    hciUART,            ///< an HCI packet with its indicator in front
    hciUARTDirection,   ///< four octets of direction, then the same
    monitorByFlags,     ///< what a Linux monitor saw; the record's flags tell the opcode
    monitor,            ///< the same with adapter and opcode in front
    lowEnergyWithInfo,  ///< a link-layer packet behind a sniffer's description
    nordicSniffer,      ///< the same behind the header of Nordic Semiconductor's sniffer
};

/// The longest packet that a capture may hold; more is no packet. tcpdump's and Wireshark's limit.
inline constexpr std::uint32_t longestPacket = 262144;

/// One packet of a capture file.
struct Packet {
    std::optional<std::int64_t> nanoseconds;  ///< since an arbitrary moment; nothing: the packet's time is not known
    PacketKind kind = PacketKind::unknown;
    std::uint32_t flags = 0;
    std::span<const std::uint8_t> bytes;  ///< valid until the next packet is read
};

/// Reads a capture file packet by packet.
class PacketSource {
public:
    virtual ~PacketSource() = default;
    /// The next packet; nothing at the end.
    /// @throws RecordingDamage
    virtual std::optional<Packet> next() = 0;
};

/// What a link type of pcap and pcapng (www.tcpdump.org/linktypes.html) stands for.
PacketKind packetKindOfLinkType(std::uint16_t linkType);

}  // namespace nearcast::replay
