// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace nearcast::replay {

/// Reads recordings in JSON Lines: `advertise`, `radio` and `end` lines of a scenario (see `lines::parseLine`).
/// Times are as written. Any other line is damage.
class JsonLinesReader : public RecordingReader {
public:
    /// A line longer than that is no line.
    static constexpr std::size_t longestLine = std::size_t{1} << 20;

    /// @param input at the file's begin; lives longer than the reader
    explicit JsonLinesReader(RecordingInput& input) : input_(input) {}
    std::optional<RecordedItem> next() override;

private:
    RecordingInput& input_;
    std::uint64_t line_ = 0;
    std::chrono::microseconds previous_{0};
};

}  // namespace nearcast::replay
