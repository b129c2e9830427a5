// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Playback.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace nearcast::cli {

/// A file that cannot be played; the message names it and says what is wrong and where.
class PlaybackFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What is played of a file.
struct PlaybackFile {
    std::string path;  ///< without the options
    lab::PlaybackInput input;
    std::string damage;  ///< why the file ends before its end; empty when it does not
};

/// Reads a recording of any kind, or a scenario, whole.
/// @param argument a path, which options may follow as in `replay:`: "shop.pcapng?as=dongles"; see `RecordingOptions`
/// @param registry as `PlaybackInput::registry`
/// @throws PlaybackFileError
PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry = nullptr);

}  // namespace nearcast::cli
