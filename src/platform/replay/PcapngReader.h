// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/ByteReader.h"
#include "platform/replay/PacketSource.h"
#include "platform/replay/RecordingInput.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::replay {

/// What an interface of a pcapng file counts time in: the options if_tsresol and if_tsoffset.
struct PcapngClock {
    /// The exponent of the unit: 10^-n seconds, or with the highest bit set 2^-n.
    std::uint8_t resolution = 6;
    std::int64_t offsetSeconds = 0;

    /// Ticks in nanoseconds since 1970. Times beyond what 64 bits hold become the nearest that they hold.
    [[nodiscard]] std::int64_t nanoseconds(std::uint64_t ticks) const;
};

/// The bytes that a pcapng file begins with; the same in both byte orders.
inline constexpr std::array<std::uint8_t, 4> pcapngMagic{0x0A, 0x0D, 0x0D, 0x0A};

/// Reads pcapng files: any number of sections, each in its own byte order and with interfaces of its own; enhanced,
/// simple and obsolete packet blocks. Other blocks, and packets of link types without advertisements, are passed over.
class PcapngReader : public PacketSource {
public:
    /// @param input at the file's begin; lives longer than the reader
    explicit PcapngReader(RecordingInput& input) : input_(input) {}
    std::optional<Packet> next() override;

private:
    struct Block {
        std::uint32_t type = 0;
        std::uint32_t length = 0;  ///< with its frame
        std::uint64_t start = 0;
    };
    struct Interface {
        PacketKind kind = PacketKind::unknown;
        std::uint32_t snapLength = 0;
        PcapngClock clock;
    };
    struct Foreign {
        std::uint64_t start = 0;
        std::uint16_t linkType = 0;
    };
    struct Stamp {
        std::uint32_t interface = 0;
        std::uint64_t ticks = 0;
        std::uint32_t length = 0;
    };

    Block readFrame();
    std::optional<Packet> readBlock(const Block& block);
    std::span<const std::uint8_t> takeBlock(const Block& block);
    void skipBlock(const Block& block);
    void checkTrailer(const Block& block, std::span<const std::uint8_t> trailer) const;
    void beginSection();
    void readInterface(ByteReader body, const Block& block);
    [[nodiscard]] const Interface& interfaceOf(std::uint32_t number, const Block& block) const;
    Packet enhancedPacket(ByteReader body, const Block& block) const;
    Packet obsoletePacket(ByteReader body, const Block& block) const;
    Packet simplePacket(ByteReader body, const Block& block) const;
    Packet stampedPacket(ByteReader& body, const Stamp& stamp, const Block& block) const;
    void requireKnownLinkType() const;

    RecordingInput& input_;
    ByteReader::Order order_ = ByteReader::Order::little;
    std::vector<Interface> interfaces_;
    bool known_ = false;              // whether any interface of the file has a link type that we know
    std::optional<Foreign> foreign_;  // the first one, if it has not
};

}  // namespace nearcast::replay
