// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Arguments.h"
#include "common/Progress.h"
#include "lab/Playback.h"
#include "lab/Score.h"

#include <nearcast/NearestSettings.h>

#include <memory>
#include <string>
#include <vector>

namespace nearcast::cli {

/// A recording after its playback, and where its user stood.
struct JudgedRecording {
    std::string path;
    std::string truthPath;
    lab::Playback playback;
    lines::Truth truth;
    Tally tally;         ///< what was played
    std::string damage;  ///< why the recording ends before its end; empty when it does not
};

/// The truth file of a recording where the command line names none: beside it, with ".truth.jsonl" in place of the
/// extension, and of the ".gz" behind that.
std::string truthPathFor(const std::string& recordingPath);

/// Reads and plays recordings with their truth files.
/// @param recordings as `readPlaybackFile`
/// @param truths     one for each recording, or empty: `truthPathFor` each
/// @param registry   as `lab::PlaybackInput::registry`
/// @param progress   told how far it is
/// @throws std::invalid_argument when there are more truths than recordings, or fewer, or a truth file is missing
/// @throws std::invalid_argument, of which UsageError and lines::InputError are, for a file with errors
/// @throws std::system_error for a recording that cannot be opened or read
std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry, Progress* progress = nullptr);

/// The scores of one rule.
struct RuleScores {
    std::string rule;
    std::vector<lab::Score> each;  ///< a score for each recording
    lab::Score total;
};

/// The score of `nearest` at one point of a sweep.
struct SweepScores {
    std::vector<double> values;  ///< of the swept settings, in the order of `Evaluation::sweeps`
    lab::Score total;
};

/// The scores of rules, and of `nearest` with other settings.
struct Evaluation {
    NearestSettings settings;
    std::vector<std::string> recordings;
    std::vector<RuleScores> rules;
    std::vector<SettingSweep> sweeps;  ///< one or two, or none
    std::vector<SweepScores> points;   ///< the last setting's values change fastest
};

/// Scores rules on recordings.
/// @param rules  names of rules, each known
/// @param sweeps at most two
/// @param progress told how far it is
Evaluation evaluate(const std::vector<JudgedRecording>& recordings, const std::vector<std::string>& rules,
                    const NearestSettings& settings, const std::vector<SettingSweep>& sweeps,
                    Progress* progress = nullptr);

}  // namespace nearcast::cli
