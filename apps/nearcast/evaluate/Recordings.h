// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"

#include <memory>
#include <string>
#include <vector>

namespace nearcast::cli {

/// The truth file that belongs to a recording where none is named: beside it, its name's ending replaced by
/// ".truth.jsonl".
std::string truthPathFor(const std::string& recordingPath);

/// Reads and plays recordings with their truth files.
/// @param recordings as `readPlaybackFile`
/// @param truths     one for each recording; none: `truthPathFor` each
/// @param registry   as `lab::PlaybackInput::registry`
/// @throws std::invalid_argument, of which UsageError and lines::ScenarioError are, when the numbers do not fit and for
///         a file that is wrong
std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry);

}  // namespace nearcast::cli
