// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/PcapngReader.h"

#include <algorithm>
#include <cmath>

namespace nearcast::replay {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t latestSeconds = INT64_MAX / nanosecondsPerSecond - 1;

struct Split {
    std::uint64_t seconds = 0;
    std::int64_t nanoseconds = 0;
};

Split decimal(std::uint64_t ticks, int digits) {
    std::uint64_t perSecond = 1;
    for (int i = 0; i < digits; ++i) perSecond *= 10;
    const std::uint64_t fraction = ticks % perSecond;
    // Beyond nanoseconds the last digits are of no interest.
    const auto nanoseconds =
        digits <= 9 ? fraction * (nanosecondsPerSecond / perSecond) : fraction / (perSecond / nanosecondsPerSecond);
    return {ticks / perSecond, static_cast<std::int64_t>(nanoseconds)};
}

Split binary(std::uint64_t ticks, int bits) {
    const std::uint64_t fraction = ticks & ((std::uint64_t{1} << bits) - 1);
    const double seconds = std::ldexp(static_cast<double>(fraction), -bits);
    return {ticks >> bits, std::llround(seconds * static_cast<double>(nanosecondsPerSecond))};
}

Split split(std::uint64_t ticks, std::uint8_t resolution) {
    const int exponent = resolution & 0x7F;
    const bool powerOfTwo = (resolution & 0x80) != 0;
    // So fine that 64 bits of ticks do not reach a second: no clock's.
    if (exponent > (powerOfTwo ? 63 : 19)) return {};
    return powerOfTwo ? binary(ticks, exponent) : decimal(ticks, exponent);
}

enum BlockType : std::uint32_t {
    interfaceDescription = 1,
    obsoletePacketBlock = 2,
    simplePacketBlock = 3,
    enhancedPacketBlock = 6,
    sectionHeader = 0x0A0D0D0A,
};

constexpr std::uint32_t byteOrderMagic = 0x1A2B3C4D;
constexpr std::size_t frameLength = 12;  // type and length in front, length again behind
constexpr std::uint32_t longestBlock = 4 * longestPacket;

constexpr std::size_t mostInterfaces = 65536;

constexpr std::uint16_t optionEnd = 0;
constexpr std::uint16_t optionResolution = 9;
constexpr std::uint16_t optionOffset = 14;

std::size_t padded(std::size_t length) { return (length + 3) / 4 * 4; }

bool isKnown(std::uint32_t type) {
    return type == interfaceDescription || type == obsoletePacketBlock || type == simplePacketBlock ||
           type == enhancedPacketBlock || type == sectionHeader;
}

void readClock(PcapngClock& clock, ByteReader& body, ByteReader::Order order) {
    while (body.left() >= 4) {
        const std::uint16_t code = body.u16();
        const std::uint16_t length = body.u16();
        if (code == optionEnd) return;
        ByteReader value(body.take(padded(length)), order);
        if (body.failed()) return;
        if (code == optionResolution && length == 1) clock.resolution = value.u8();
        if (code == optionOffset && length == 8) clock.offsetSeconds = static_cast<std::int64_t>(value.u64());
    }
}

void checkSection(ByteReader body, std::uint64_t start) {
    body.skip(4);
    const std::uint16_t major = body.u16();
    if (!body.failed() && major == 1) return;
    throw RecordingDamage(start, "a section of the unknown version " + std::to_string(major));
}

}  // namespace

std::int64_t PcapngClock::nanoseconds(std::uint64_t ticks) const {
    const Split time = split(ticks, resolution);
    const auto seconds = static_cast<std::int64_t>(std::min<std::uint64_t>(time.seconds, latestSeconds));
    const std::int64_t offset = std::clamp(offsetSeconds, -latestSeconds, latestSeconds - seconds);
    return (seconds + offset) * nanosecondsPerSecond + time.nanoseconds;
}

std::optional<Packet> PcapngReader::next() {
    while (!input_.atEnd()) {
        const Block block = readFrame();
        if (const auto packet = readBlock(block)) return packet;
    }
    requireKnownLinkType();
    return std::nullopt;
}

PcapngReader::Block PcapngReader::readFrame() {
    Block block;
    block.start = input_.offset();
    const auto head = input_.peek(frameLength);
    if (head.size() < frameLength) {
        throw RecordingDamage(block.start, input_.damage().value_or("the file ends inside a block's frame"));
    }
    if (std::equal(pcapngMagic.begin(), pcapngMagic.end(), head.begin())) beginSection();
    ByteReader reader(head, order_);
    block.type = reader.u32();
    block.length = reader.u32();
    if (block.length < frameLength || block.length % 4 != 0) {
        throw RecordingDamage(block.start, "a block of " + std::to_string(block.length) + " bytes");
    }
    return block;
}

void PcapngReader::beginSection() {
    const auto head = input_.peek(frameLength);
    const auto magic = head.subspan(8);
    if (ByteReader(magic, ByteReader::Order::little).u32() == byteOrderMagic) {
        order_ = ByteReader::Order::little;
    } else if (ByteReader(magic, ByteReader::Order::big).u32() == byteOrderMagic) {
        order_ = ByteReader::Order::big;
    } else {
        throw RecordingDamage(input_.offset(), "a section without a byte order");
    }
    interfaces_.clear();
}

std::optional<Packet> PcapngReader::readBlock(const Block& block) {
    if (!isKnown(block.type)) {
        skipBlock(block);
        return std::nullopt;
    }
    ByteReader body(takeBlock(block), order_);
    switch (block.type) {
        case interfaceDescription: readInterface(body, block); return std::nullopt;
        case enhancedPacketBlock: return enhancedPacket(body, block);
        case obsoletePacketBlock: return obsoletePacket(body, block);
        case simplePacketBlock: return simplePacket(body, block);
        default: checkSection(body, block.start); return std::nullopt;
    }
}

std::span<const std::uint8_t> PcapngReader::takeBlock(const Block& block) {
    if (block.length > longestBlock) {
        throw RecordingDamage(block.start, "a block of " + std::to_string(block.length) + " bytes");
    }
    const auto whole = input_.takeAll(block.length, block.start);
    checkTrailer(block, whole.last(4));
    return whole.subspan(8, block.length - frameLength);
}

void PcapngReader::skipBlock(const Block& block) {
    input_.skipAll(block.length - 4, block.start);
    checkTrailer(block, input_.takeAll(4, block.start));
}

void PcapngReader::checkTrailer(const Block& block, std::span<const std::uint8_t> trailer) const {
    if (ByteReader(trailer, order_).u32() == block.length) return;
    throw RecordingDamage(block.start, "a block whose two lengths differ");
}

void PcapngReader::readInterface(ByteReader body, const Block& block) {
    Interface interface;
    const std::uint16_t linkType = body.u16();
    body.skip(2);
    interface.kind = packetKindOfLinkType(linkType);
    interface.snapLength = body.u32();
    if (body.failed()) throw RecordingDamage(block.start, "an interface without its fields");
    if (interfaces_.size() == mostInterfaces) throw RecordingDamage(block.start, "too many interfaces");
    readClock(interface.clock, body, order_);
    interfaces_.push_back(interface);
    if (!foreign_ && !known_) foreign_ = Foreign{block.start, linkType};
    known_ = known_ || interface.kind != PacketKind::unknown;
}

Packet PcapngReader::enhancedPacket(ByteReader body, const Block& block) const {
    Stamp stamp;
    stamp.interface = body.u32();
    stamp.ticks = std::uint64_t{body.u32()} << 32;
    stamp.ticks |= body.u32();
    stamp.length = body.u32();
    body.skip(4);  // the packet's length before it was cut
    return stampedPacket(body, stamp, block);
}

Packet PcapngReader::obsoletePacket(ByteReader body, const Block& block) const {
    Stamp stamp;
    stamp.interface = body.u16();
    body.skip(2);  // packets lost
    stamp.ticks = std::uint64_t{body.u32()} << 32;
    stamp.ticks |= body.u32();
    stamp.length = body.u32();
    body.skip(4);  // the packet's length before it was cut
    return stampedPacket(body, stamp, block);
}

Packet PcapngReader::stampedPacket(ByteReader& body, const Stamp& stamp, const Block& block) const {
    Packet packet;
    const Interface& interface = interfaceOf(stamp.interface, block);
    packet.kind = interface.kind;
    packet.nanoseconds = interface.clock.nanoseconds(stamp.ticks);
    packet.bytes = body.take(stamp.length);
    if (body.failed()) throw RecordingDamage(block.start, "a packet longer than its block");
    return packet;
}

Packet PcapngReader::simplePacket(ByteReader body, const Block& block) const {
    const Interface& interface = interfaceOf(0, block);
    std::size_t length = body.u32();
    if (interface.snapLength != 0) length = std::min<std::size_t>(length, interface.snapLength);
    Packet packet;
    packet.kind = interface.kind;
    packet.bytes = body.take(length);
    if (body.failed()) throw RecordingDamage(block.start, "a packet longer than its block");
    return packet;
}

const PcapngReader::Interface& PcapngReader::interfaceOf(std::uint32_t number, const Block& block) const {
    if (number < interfaces_.size()) return interfaces_[number];
    throw RecordingDamage(block.start, "a packet of interface " + std::to_string(number) + ", which is not described");
}

void PcapngReader::requireKnownLinkType() const {
    if (known_ || !foreign_) return;
    throw RecordingDamage(foreign_->start, "link type " + std::to_string(foreign_->linkType) +
                                               " is not known (known: 187, 201, 254, 256, 272)");
}

}  // namespace nearcast::replay
