// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Playback.h"

#include <memory>
#include <string>

namespace nearcast::cli {

/// The content of a file that is played.
struct PlaybackFile {
    std::string path;  ///< without the options
    lab::PlaybackInput input;
    std::string damage;  ///< why the file could be read only in part; empty when it was read whole
};

/// Reads a recording of any kind, or a scenario, whole.
/// @param argument a path, which options may follow as in `replay:`: "shop.pcapng?as=dongles"; see `RecordingOptions`
/// @param registry as `PlaybackInput::registry`
/// @throws UsageError naming the file and what is wrong where
PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry = nullptr);

}  // namespace nearcast::cli
