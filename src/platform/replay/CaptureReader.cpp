// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/CaptureReader.h"

#include "platform/hciformat/AdStructures.h"
#include "platform/hciformat/ByteReader.h"
#include "platform/replay/Btsnoop.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

namespace nearcast::replay {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Auxiliary = LinkLayerPacket::Auxiliary;
using Order = ByteReader::Order;

constexpr std::uint8_t eventIndicator = 4;  // H4 UART transport: Core Specification, Volume 4, Part A, 2
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

// Up to here a time in a line of JSON, which is read as a double, names each microsecond.
constexpr std::chrono::microseconds latest = std::chrono::seconds(4'000'000'000);

}  // namespace

void LinkDecoder::read(const Packet& packet, const RawReportSink& sink) {
    if (const auto event = eventOf(packet)) {
        events_.read(*event, sink);
    } else if (const auto linkLayerPacket = linkLayerPacketOf(packet)) {
        linkLayer_.read(*linkLayerPacket, sink);
    }
}

std::optional<RecordedItem> CaptureReader::next() {
    while (ready_.empty()) {
        const auto packet = packets_->next();
        if (!packet) return std::nullopt;
        advance(*packet);
        if (auto item = itemOfNote(*packet, now_)) {
            ready_.push_back(std::move(*item));
            continue;
        }
        decoder_.read(*packet, [this](const RawReport& raw) { add(raw); });
    }
    RecordedItem item = std::move(ready_.front());
    ready_.pop_front();
    return item;
}

std::optional<std::chrono::microseconds> CaptureReader::begin() const {
    constexpr std::chrono::microseconds latestBegin = std::chrono::seconds(5'000'000'000);  // in the year 2128
    if (!first_) return std::nullopt;
    const auto begin = std::chrono::floor<std::chrono::microseconds>(std::chrono::nanoseconds(*first_));
    if (begin < std::chrono::microseconds(0) || begin > latestBegin) return std::nullopt;
    return begin;
}

void CaptureReader::advance(const Packet& packet) {
    if (!packet.nanoseconds) return;
    if (!first_) first_ = packet.nanoseconds;
    // Unsigned, for a damaged file may hold any two times.
    const auto passed = static_cast<std::int64_t>(static_cast<std::uint64_t>(*packet.nanoseconds) -
                                                  static_cast<std::uint64_t>(*first_));
    const std::chrono::microseconds rounded(passed / 1000 + (passed % 1000 >= 500 ? 1 : 0));
    now_ = std::clamp(rounded, now_, latest);
}

void CaptureReader::add(const RawReport& raw) {
    RecordedReport recorded;
    recorded.at = now_;
    recorded.malformed = readReport(raw, recorded.report).has_value();
    senders_.complete(recorded.report);
    ready_.emplace_back(std::move(recorded));
}

}  // namespace nearcast::replay
