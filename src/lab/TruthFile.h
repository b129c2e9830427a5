// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Truth.h"
#include "lab/Playback.h"

#include <string>

namespace nearcast::lab {

/// Reads where the user of a recording stood: JSON Lines of {"at": seconds, "truth": address}, an address of null for
/// next to none. "distance", "second" and "secondDistance", which tell more, are checked and passed over. Times do not
/// fall; of two lines with one time the later one counts.
/// @throws ScenarioError naming the file, the line and what is wrong; also for a file without a line
lab::Truth readTruth(const std::string& path);

/// @param path of the truth, for the message
/// @throws ScenarioError naming the line, when a dongle of the truth is none of the playback's registered ones
void requireKnown(const lab::Truth& truth, const Playback& playback, const std::string& path);

}  // namespace nearcast::lab
