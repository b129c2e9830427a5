// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "nearest/Rule.h"
#include "nearest/evaluation/Score.h"
#include "scenario/Playback.h"

#include <functional>

namespace nearcast::scenario {

/// Tells a rule what happened in a playback, of the registered dongles alone, and asks for what is nearest at each
/// sample up to the recording's end, that moment included. What happens at the time of a sample is told before it.
nearest::Answers answersOf(const Playback& playback, nearest::Rule& rule);

/// The same, with a function called at each sample in place of the question.
void tell(const Playback& playback, nearest::Rule& rule, const std::function<void(double at)>& sample);

}  // namespace nearcast::scenario
