// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/MonitorWriter.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace nearcast::replay {

namespace {

enum BlockType : std::uint32_t { interfaceDescription = 1, enhancedPacket = 6, sectionHeader = 0x0A0D0D0A };

constexpr std::uint16_t linuxMonitor = 254;
constexpr std::uint16_t resolutionOption = 9;
constexpr std::size_t frameLength = 12;  // type and length in front, length again behind

void appendLittle(std::string& out, std::uint64_t value, int octets) {
    for (int octet = 0; octet < octets; ++octet) out.push_back(static_cast<char>(value >> 8 * octet & 0xFF));
}

void appendBig16(std::string& out, std::uint16_t value) {
    out.push_back(static_cast<char>(value >> 8));
    out.push_back(static_cast<char>(value & 0xFF));
}

void appendBlock(std::string& out, BlockType type, std::string body) {
    body.resize((body.size() + 3) / 4 * 4);
    const std::size_t length = body.size() + frameLength;
    appendLittle(out, type, 4);
    appendLittle(out, length, 4);
    out += body;
    appendLittle(out, length, 4);
}

std::string section() {
    std::string body;
    appendLittle(body, 0x1A2B3C4D, 4);  // by which readers tell the order of octets
    appendLittle(body, 1, 2);           // version 1.0
    appendLittle(body, 0, 2);
    appendLittle(body, ~std::uint64_t{0}, 8);  // its length is not known
    return body;
}

std::string monitorInterface() {
    std::string body;
    appendLittle(body, linuxMonitor, 2);
    appendLittle(body, 0, 2);
    appendLittle(body, 0, 4);  // packets of any length
    appendLittle(body, resolutionOption, 2);
    appendLittle(body, 1, 2);
    appendLittle(body, 6, 4);  // microseconds, and what fills the option up
    appendLittle(body, 0, 4);  // no more options
    return body;
}

class PcapngWriter final : public MonitorWriter {
public:
    PcapngWriter(Out out, std::chrono::microseconds start) : MonitorWriter(std::move(out), start) {
        std::string header;
        appendBlock(header, sectionHeader, section());
        appendBlock(header, interfaceDescription, monitorInterface());
        begin(header);
    }

private:
    void appendPacket(std::string& out, std::chrono::microseconds at, std::uint16_t adapter, std::uint16_t opcode,
                      const std::string& bytes) const override {
        constexpr std::size_t monitorHeader = 4;
        // A time before 1970 has no place here.
        const auto ticks = static_cast<std::uint64_t>(std::max<std::int64_t>(0, at.count()));
        std::string body;
        appendLittle(body, 0, 4);  // the one interface
        appendLittle(body, ticks >> 32, 4);
        appendLittle(body, ticks & 0xFFFFFFFF, 4);
        appendLittle(body, bytes.size() + monitorHeader, 4);  // as it is here
        appendLittle(body, bytes.size() + monitorHeader, 4);  // as it was
        appendBig16(body, adapter);
        appendBig16(body, opcode);
        appendBlock(out, enhancedPacket, body + bytes);
    }
};

}  // namespace

std::unique_ptr<RecordingWriter> makePcapngWriter(RecordingWriter::Out out, std::chrono::microseconds begin) {
    return std::make_unique<PcapngWriter>(std::move(out), begin);
}

}  // namespace nearcast::replay
