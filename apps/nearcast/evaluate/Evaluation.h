// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Arguments.h"
#include "lab/Score.h"
#include "lab/Playback.h"

#include <nearcast/NearestSettings.h>

#include <string>
#include <vector>

namespace nearcast::cli {

/// A recording that was played, and where its user stood.
struct JudgedRecording {
    std::string path;
    std::string truthPath;
    lab::Playback playback;
    lab::Truth truth;
    std::string damage;  ///< why the recording ends before its end; empty when it does not
};

/// How good a rule was.
struct RuleScores {
    std::string rule;
    std::vector<lab::Score> each;  ///< a score for each recording
    lab::Score total;
};

/// How good `nearest` was with some settings.
struct SweepScores {
    std::vector<double> values;  ///< of the settings that are swept, in their order
    lab::Score total;
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
