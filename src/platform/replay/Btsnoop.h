// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/replay/PacketSource.h"
#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nearcast::replay {

// In captures of the Linux monitor there is a packet for notes, which btmon shows as text and everybody else passes
// over (BlueZ, doc/btsnoop.txt: opcode 12, System Note). What a capture has no packet for is written as such notes:
// "nearcast: radio 4" for a state of the radio, "nearcast: end" for a recording's end, "nearcast: begin" for its begin.

inline constexpr std::uint16_t monitorEvent = 3;
inline constexpr std::uint16_t monitorNote = 12;
// Adapters, as a monitor numbers them: the one that our events are said to come from, and none, which notes have.
inline constexpr std::uint16_t firstAdapter = 0;
inline constexpr std::uint16_t noAdapter = 0xFFFF;

inline constexpr const char* beginNote = "nearcast: begin";
std::string noteOf(const RecordedState& state);
std::string noteOf(const RecordedEnd& end);

/// The item that a note of ours says; nothing for the begin, and for any other packet.
/// @param at the packet's time
std::optional<RecordedItem> itemOfNote(const Packet& packet, std::chrono::microseconds at);

/// The bytes that a btsnoop file begins with.
inline constexpr std::array<std::uint8_t, 8> btsnoopMagic{'b', 't', 's', 'n', 'o', 'o', 'p', 0};

/// From the year 0, where btsnoop begins to count, to 1970, in microseconds.
inline constexpr std::uint64_t btsnoopEpoch = 0x00DCDDB30F2F8000;

/// Reads btsnoop files: the snoop format of RFC 1761 with Bluetooth datalinks, times in microseconds.
class BtsnoopReader : public PacketSource {
public:
    /// Reads the file's header.
    /// @param input at the file's begin; lives longer than the reader
    /// @param name  of the file, for messages
    /// @throws std::invalid_argument for a version or datalink that is not known
    BtsnoopReader(RecordingInput& input, const std::string& name);
    std::optional<Packet> next() override;

private:
    RecordingInput& input_;
    PacketKind kind_;
};

}  // namespace nearcast::replay
