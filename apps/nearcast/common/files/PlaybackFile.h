// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Progress.h"
#include "lab/Playback.h"
#include "platform/radio/RadioString.h"

#include <map>
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

/// The radio string of a recording that is named without its kind, as an argument of the command line.
/// @param argument a path, which options may follow as in `replay:`: "shop.pcapng?as=dongles"; see `RecordingOptions`
/// @param more     options that go before those
/// @throws UsageError for options that are wrong
RadioString recordingNamed(const std::string& argument, const std::map<std::string, std::string>& more = {});

/// Reads a recording of any kind, or a scenario, whole. A recording that is cut or damaged is read up to there, and so
/// is a scenario that is cut.
/// @param argument as that of `recordingNamed`
/// @param registry as `PlaybackInput::registry`
/// @param progress told how far it is
/// @throws UsageError for options that are wrong
/// @throws lines::InputError naming the file, when a line of a scenario is wrong
/// @throws std::system_error, replay::NoRecording naming the file that cannot be read, or is no recording
PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry = nullptr,
                              Progress* progress = nullptr);

}  // namespace nearcast::cli
