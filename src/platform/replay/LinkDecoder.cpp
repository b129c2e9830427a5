// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/LinkDecoder.h"

#include "platform/hciformat/ByteReader.h"

#include <optional>
#include <span>

namespace nearcast::replay {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Auxiliary = LinkLayerPacket::Auxiliary;
using Order = ByteReader::Order;

constexpr std::uint8_t eventIndicator = 4;  // H4 UART transport: Core Specification, Volume 4, Part A, 2
constexpr std::uint16_t monitorEvent = 3;   // Linux monitor: HCI event packet
constexpr std::uint32_t flagReceived = 1;   // btsnoop: from the controller ...
constexpr std::uint32_t flagNotData = 2;    // ... and a command or an event
constexpr std::uint8_t firstPrimaryIndex = 37;

std::optional<Bytes> eventBehindIndicator(ByteReader packet) {
    if (packet.u8() != eventIndicator) return std::nullopt;
    return packet.rest();
}

std::optional<Bytes> eventByFlags(const Packet& packet) {
    constexpr std::uint32_t event = flagReceived | flagNotData;
    if ((packet.flags & event) != event) return std::nullopt;
    return packet.bytes;
}

std::optional<Bytes> monitorEventBehind(std::uint16_t opcode, Bytes bytes) {
    if (opcode != monitorEvent) return std::nullopt;
    return bytes;
}

/// The HCI event that a packet is, if it is one.
std::optional<Bytes> eventOf(const Packet& packet) {
    ByteReader reader(packet.bytes, Order::big);
    switch (packet.kind) {
        case PacketKind::hciByFlags: return eventByFlags(packet);
        case PacketKind::hciUART: return eventBehindIndicator(reader);
        case PacketKind::hciUARTDirection: reader.skip(4); return eventBehindIndicator(reader);
        case PacketKind::monitorByFlags:
            return monitorEventBehind(static_cast<std::uint16_t>(packet.flags), packet.bytes);
        case PacketKind::monitor: {
            reader.skip(2);  // adapter
            const std::uint16_t opcode = reader.u16();
            return monitorEventBehind(opcode, reader.rest());
        }
        default: return std::nullopt;
    }
}

Auxiliary auxiliaryOf(unsigned type) {
    constexpr Auxiliary types[] = {Auxiliary::advertisement, Auxiliary::chain, Auxiliary::periodic,
                                   Auxiliary::scanResponse};
    return types[type & 3];
}

/// www.tcpdump.org/linktypes/LINKTYPE_BLUETOOTH_LE_LL_WITH_PHDR.html
std::optional<LinkLayerPacket> withInfo(Bytes bytes) {
    enum Flag { dewhitened = 0x0001, signalValid = 0x0002, checked = 0x0400, passed = 0x0800 };
    ByteReader reader(bytes);
    const std::uint8_t channel = reader.u8();  // by frequency: 0, 12 and 39 are the primary advertising channels
    const std::int8_t signal = reader.i8();
    reader.skip(1 + 1 + 4);  // noise, what is known of the access address
    const std::uint16_t flags = reader.u16();
    const unsigned type = flags >> 7 & 7;
    const bool broken = (flags & checked) != 0 && (flags & passed) == 0;
    if ((flags & dewhitened) == 0 || broken || type > 1) return std::nullopt;
    LinkLayerPacket packet;
    if ((flags & signalValid) != 0) packet.RSSI = signal;
    packet.primaryChannel = channel == 0 || channel == 12 || channel == 39;
    if (type == 1) packet.auxiliary = auxiliaryOf(flags >> 12);
    packet.codedPHY = flags >> 14 == 2;
    packet.bytes = reader.rest();
    return packet;
}

/// www.tcpdump.org/linktypes/LINKTYPE_NORDIC_BLE.html. The lengths in the header are not needed: the link-layer packet
/// has one of its own.
std::optional<LinkLayerPacket> nordic(Bytes bytes) {
    enum PacketID { advertisement = 0x02, anyPacket = 0x06 };
    ByteReader reader(bytes);
    reader.skip(3);  // board; lengths of the header and of what follows it
    const std::uint8_t version = reader.u8();
    reader.skip(2);  // counter
    const std::uint8_t identifier = reader.u8();
    if (identifier != (version >= 3 ? advertisement : anyPacket)) return std::nullopt;
    const std::size_t infoLength = reader.u8();
    if (infoLength < 4) return std::nullopt;
    const std::uint8_t flags = reader.u8();
    const std::uint8_t channel = reader.u8();
    const std::uint8_t attenuation = reader.u8();
    reader.skip(infoLength - 4);                // event counter, time
    if ((flags & 1) == 0) return std::nullopt;  // wrong checksum
    LinkLayerPacket packet;
    packet.RSSI = -std::int32_t{attenuation};
    packet.primaryChannel = channel >= firstPrimaryIndex;
    if (version >= 3 && !packet.primaryChannel) packet.auxiliary = auxiliaryOf(flags >> 1);
    packet.codedPHY = (flags >> 4 & 7) == 2;
    packet.bytes = reader.rest();
    return packet;
}

std::optional<LinkLayerPacket> linkLayerPacketOf(const Packet& packet) {
    switch (packet.kind) {
        case PacketKind::lowEnergyWithInfo: return withInfo(packet.bytes);
        case PacketKind::nordicSniffer: return nordic(packet.bytes);
        default: return std::nullopt;
    }
}

}  // namespace

void LinkDecoder::read(const Packet& packet, const RawReportSink& sink) {
    if (const auto event = eventOf(packet)) {
        events_.read(*event, sink);
    } else if (const auto linkLayerPacket = linkLayerPacketOf(packet)) {
        linkLayer_.read(*linkLayerPacket, sink);
    }
}

}  // namespace nearcast::replay
