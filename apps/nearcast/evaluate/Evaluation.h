// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "nearest/SettingArguments.h"
#include "nearest/evaluation/Score.h"
#include "scenario/Playback.h"

#include <nearcast/NearestSettings.h>

#include <memory>
#include <string>
#include <vector>

namespace nearcast::cli {

/// A recording that was played, and where its user stood.
struct JudgedRecording {
    std::string path;
    std::string truthPath;
    scenario::Playback playback;
    nearest::Truth truth;
    std::string damage;  ///< why the recording ends before its end; empty when it does not
};

/// The truth file that belongs to a recording where none is named: beside it, its name's ending replaced by
/// ".truth.jsonl".
std::string truthPathFor(const std::string& recordingPath);

/// Reads and plays recordings with their truth files.
/// @param recordings as `readPlaybackFile`
/// @param truths     one for each recording; none: `truthPathFor` each
/// @param registry   as `scenario::PlaybackInput::registry`
/// @throws std::invalid_argument when the numbers do not fit
/// @throws PlaybackFileError, scenario::ScenarioError for a file that is wrong
std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry);

/// How good a rule was.
struct RuleScores {
    std::string rule;
    std::vector<nearest::Score> each;  ///< a score for each recording
    nearest::Score total;
};

/// How good `nearest` was with some settings.
struct SweepScores {
    std::vector<double> values;  ///< of the settings that are swept, in their order
    nearest::Score total;
};

/// What an evaluation found.
struct Evaluation {
    NearestSettings settings;
    std::vector<std::string> recordings;
    std::vector<RuleScores> rules;
    std::vector<SettingSweep> sweeps;  ///< one or two, or none
    std::vector<SweepScores> points;   ///< the last setting's values change fastest
};

/// Runs rules over recordings.
/// @param rules  names of rules, each known
/// @param sweeps at most two
Evaluation evaluate(const std::vector<JudgedRecording>& recordings, const std::vector<std::string>& rules,
                    const NearestSettings& settings, const std::vector<SettingSweep>& sweeps);

}  // namespace nearcast::cli
