// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// Writes a setting given on a command line as "KEY=VALUE".
/// @throws std::invalid_argument for an unknown key and for a value that is no number or out of range
void applySetting(NearestSettings& settings, std::string_view argument);

/// The same for several, one after another.
/// @throws std::invalid_argument
NearestSettings settingsOf(const std::vector<std::string>& arguments);

/// A setting and the values to try.
struct SettingSweep {
    const NearestSetting* setting = nullptr;
    std::vector<double> values;
};

/// Values that a sweep has where the command line does not say.
inline constexpr std::size_t ordinarySteps = 11;
inline constexpr std::size_t mostSteps = 1000;

/// Reads "KEY=FROM..TO" or "KEY=FROM..TO:STEPS": so many values, evenly from the one to the other, both included.
/// @throws std::invalid_argument for anything else, and for values out of range
SettingSweep sweepOf(std::string_view argument);

}  // namespace nearcast::cli
