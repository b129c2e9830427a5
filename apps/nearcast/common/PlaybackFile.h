// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Progress.h"
#include "lab/Playback.h"

#include <memory>
#include <string>

namespace nearcast::cli {

/// The content of a file that is played.
struct PlaybackFile {
    std::string path;  ///< without the options; "-": standard input
    std::string name;  ///< the same for people
    lab::PlaybackInput input;
    Tally tally;         ///< what `input` holds
    std::string damage;  ///< why the file could be read only in part; empty when it was read whole
};

/// Reads a recording of any kind, or a scenario, whole. A recording that is cut or damaged is read up to there, and so
/// is a scenario that is cut.
/// @param argument a path, which options may follow as in `replay:`: "shop.pcapng?as=dongles"; see `RecordingOptions`
/// @param registry as `PlaybackInput::registry`
/// @param progress told how far it is
/// @throws UsageError for options that are not understood
/// @throws std::invalid_argument naming a file that is no recording, and where a scenario is wrong
/// @throws std::system_error naming a file that cannot be opened or read
PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry = nullptr,
                              Progress* progress = nullptr);

}  // namespace nearcast::cli
