// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/replay/PacketSource.h"
#include "platform/replay/RecordingReader.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace nearcast::replay {

// In captures of the Linux monitor there is a packet for notes, which btmon shows as text and everybody else passes
// over (BlueZ, doc/btsnoop.txt: opcode 12, System Note). What a capture has no packet for is written as such notes:
// "nearcast: radio 4" for a state of the radio, "nearcast: end" for a recording's end, "nearcast: begin" for its begin.

inline constexpr std::uint16_t monitorNote = 12;

inline constexpr const char* beginNote = "nearcast: begin";
std::string noteOf(const RecordedState& state);
std::string noteOf(const RecordedEnd& end);

/// The item that a note of ours says; nothing for the begin, and for any other packet.
/// @param at the packet's time
std::optional<RecordedItem> itemOfNote(const Packet& packet, std::chrono::microseconds at);

}  // namespace nearcast::replay
