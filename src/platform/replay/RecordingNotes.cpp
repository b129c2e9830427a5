// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingNotes.h"

#include <charconv>
#include <string_view>

namespace nearcast::replay {

namespace {

constexpr std::string_view radioNote = "nearcast: radio ";
constexpr std::string_view endNote = "nearcast: end";

/// The text of a note up to its NUL; empty for another packet.
std::string textOf(const Packet& packet) {
    if (packet.kind != PacketKind::monitorByFlags || static_cast<std::uint16_t>(packet.flags) != monitorNote) return {};
    std::string text(packet.bytes.begin(), packet.bytes.end());
    if (const auto end = text.find('\0'); end != std::string::npos) text.resize(end);
    return text;
}

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

}  // namespace nearcast::replay
