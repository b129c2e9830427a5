// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/TextReader.h"
#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace nearcast {

/// Reads recordings in JSON Lines: `advertise`, `radio` and `end` lines of a scenario (see `lines::parseLine`).
/// Times are as written. Any other line is damage.
class JsonLinesReader : public RecordingReader {
public:
    /// A line longer than that is no line.
    static constexpr std::size_t longestLine = std::size_t{1} << 20;

    /// @param input at the first line; lives longer than the reader
    explicit JsonLinesReader(RecordingInput& input);
    std::optional<RecordedItem> next() override;

private:
    std::uint64_t begin_;  ///< of the text in the file: a byte order mark may precede it
    lines::TextReader text_;
    std::chrono::microseconds previous_{0};
};

}  // namespace nearcast
