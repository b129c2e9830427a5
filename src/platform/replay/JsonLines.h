// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/TextReader.h"
#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::replay {

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
    [[noreturn]] void fail(const std::string& what) const;

    RecordingInput& input_;
    std::uint64_t begin_;  ///< of the text in the file: a byte order mark may precede it
    lines::TextReader text_;
    std::chrono::microseconds previous_{0};
};

/// What came of an import.
struct ImportResult {
    std::uint64_t reports = 0;
    std::uint64_t malformed = 0;        ///< of these: reports whose AD structures break off
    std::chrono::microseconds end{0};   ///< when the last item happens
    std::optional<std::string> damage;  ///< why the recording ended before its end ("FILE: damaged at byte ...")
};

/// Takes a recording's items one by one, with what the options make of its reports.
/// @param name what to call it in messages
/// @param out  what it throws passes through
ImportResult copyRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                           const std::function<void(const RecordedItem& item)>& out);

/// Turns a recording of any kind into JSON Lines. Playing these gives the same reports at the same times as playing the
/// recording itself with the same options.
/// @param path of the recording
/// @param out  called for each line, without its end; what it throws passes through
/// @throws what `openRecording` throws
ImportResult importRecording(const std::string& path, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out);
/// The same from an open recording.
/// @param name what to call it in messages
ImportResult importRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out);

}  // namespace nearcast::replay
