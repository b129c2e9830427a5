// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/replay/RecordingWriter.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace nearcast::replay {

/// Writes a recording as packets of the Linux monitor: reports as events, what has no packet as notes, see Btsnoop.h.
/// What surrounds a packet is its subclass's, which also writes the header, with `begin`.
class MonitorWriter : public RecordingWriter {
public:
    void write(const RecordedItem& item) final;

protected:
    /// @param begin the recording's time zero, since 1970
    MonitorWriter(Out out, std::chrono::microseconds begin);

    /// Writes the header, and the note that makes the recording begin at its time zero. Once, before all else.
    void begin(std::string_view header);

    /// Appends a packet as it stands in the file.
    /// @param at since 1970; negative where the clock was never set
    virtual void appendPacket(std::string& out, std::chrono::microseconds at, std::uint16_t adapter,
                              std::uint16_t opcode, const std::string& bytes) const = 0;

private:
    void add(const RecordedReport& report);
    void add(const RecordedState& state);
    void add(const RecordedEnd& end);
    void note(std::chrono::microseconds at, const std::string& text);

    const Out out_;
    const std::chrono::microseconds begin_;
};

}  // namespace nearcast::replay
