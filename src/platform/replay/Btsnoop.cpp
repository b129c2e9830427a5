// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/Btsnoop.h"

#include "platform/hciformat/ByteReader.h"
#include "platform/replay/MonitorWriter.h"

#include <charconv>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace nearcast::replay {

namespace {

constexpr std::string_view radioNote = "nearcast: radio ";
constexpr std::string_view endNote = "nearcast: end";

/// The text of a note up to its NUL; empty for another packet.
std::string textOf(const Packet& packet) {
    std::span<const std::uint8_t> bytes = packet.bytes;
    auto opcode = static_cast<std::uint16_t>(packet.flags);
    if (packet.kind == PacketKind::monitor) {
        ByteReader reader(packet.bytes, ByteReader::Order::big);
        reader.skip(2);  // adapter
        opcode = reader.u16();
        bytes = reader.rest();
    } else if (packet.kind != PacketKind::monitorByFlags) {
        return {};
    }
    if (opcode != monitorNote) return {};
    std::string text(bytes.begin(), bytes.end());
    if (const auto end = text.find('\0'); end != std::string::npos) text.resize(end);
    return text;
}

constexpr std::size_t fileHeader = 16;
constexpr std::size_t recordHeader = 24;

PacketKind kindOfDatalink(std::uint32_t datalink, const std::string& name) {
    switch (datalink) {
        case 1001: return PacketKind::hciByFlags;
        case 1002: return PacketKind::hciUART;
        case 2001: return PacketKind::monitorByFlags;
        default:
            throw NoRecording(name + ": btsnoop datalink " + std::to_string(datalink) +
                              " is not known (known: 1001, 1002, 2001)");
    }
}

PacketKind readHeader(RecordingInput& input, const std::string& name) {
    ByteReader header(input.takeAll(fileHeader, 0), ByteReader::Order::big);
    header.skip(btsnoopMagic.size());
    const std::uint32_t version = header.u32();
    if (version != 1) {
        throw NoRecording(name + ": btsnoop version " + std::to_string(version) + " is not known (known: 1)");
    }
    return kindOfDatalink(header.u32(), name);
}

std::int64_t nanosecondsOf(std::uint64_t microseconds) {
    // Times before 1970 are of clocks that were never set; only differences count, so the shift just keeps nanoseconds
    // within 64 bits. Unsigned, for a damaged file may hold any time; it wraps rather than overflows.
    return static_cast<std::int64_t>((microseconds - btsnoopEpoch) * 1000);
}

constexpr std::uint32_t monitorDatalink = 2001;

void appendBig(std::string& out, std::uint64_t value, int octets) {
    for (int octet = octets - 1; octet >= 0; --octet) out.push_back(static_cast<char>(value >> 8 * octet & 0xFF));
}

class BtsnoopWriter final : public MonitorWriter {
public:
    BtsnoopWriter(Out out, std::chrono::microseconds start) : MonitorWriter(std::move(out), start) {
        std::string header(btsnoopMagic.begin(), btsnoopMagic.end());
        appendBig(header, 1, 4);  // version
        appendBig(header, monitorDatalink, 4);
        begin(header);
    }

private:
    void appendPacket(std::string& out, std::chrono::microseconds at, std::uint16_t adapter, std::uint16_t opcode,
                      const std::string& bytes) const override {
        appendBig(out, bytes.size(), 4);  // as it was
        appendBig(out, bytes.size(), 4);  // as it is here
        appendBig(out, std::uint32_t{adapter} << 16 | opcode, 4);
        appendBig(out, 0, 4);  // packets lost so far
        appendBig(out, btsnoopEpoch + static_cast<std::uint64_t>(at.count()), 8);
        out += bytes;
    }
};

}  // namespace

std::string noteOf(const RecordedState& state) { return std::string(radioNote) + std::to_string(state.state); }

std::string noteOf(const RecordedEnd& /*end*/) { return std::string(endNote); }

std::optional<RecordedItem> itemOfNote(const Packet& packet, std::chrono::microseconds at) {
    const std::string text = textOf(packet);
    if (text == endNote) return RecordedEnd{at};
    if (!text.starts_with(radioNote)) return std::nullopt;
    RecordedState state{at, 0};
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data() + radioNote.size(), end, state.state);
    if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return state;
}

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

std::unique_ptr<RecordingWriter> makeBtsnoopWriter(RecordingWriter::Out out, std::chrono::microseconds begin) {
    return std::make_unique<BtsnoopWriter>(std::move(out), begin);
}

}  // namespace nearcast::replay
