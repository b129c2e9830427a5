// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Rule.h"
#include "lab/Score.h"
#include "lab/Playback.h"

#include <functional>

namespace nearcast::lab {

/// Tells a rule what happened in a playback, of the registered dongles alone, and asks for what is nearest at each
/// sample up to the recording's end, that moment included. What happens at the time of a sample is told before it.
lab::Answers answersOf(const Playback& playback, lab::Rule& rule);

/// The same, with a function called at each sample in place of the question.
void tell(const Playback& playback, lab::Rule& rule, const std::function<void(double at)>& sample);

}  // namespace nearcast::lab
