// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/replay/RecordingOptions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::replay {

/// What came of an import.
struct ImportResult {
    std::uint64_t reports = 0;
    std::uint64_t malformed = 0;        ///< of these: reports whose AD structures break off
    std::optional<std::string> damage;  ///< why the recording ended before its end ("FILE: damaged at byte ...")
};

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
