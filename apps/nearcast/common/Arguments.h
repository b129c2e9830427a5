// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// What is wrong with a value that is empty; empty where it is not. The check of every option and argument.
std::string problemWithEmpty(const std::string& text);

/// What is wrong with a text as the time in seconds that a command runs for; empty where nothing is. The check of the
/// options `--for`.
std::string problemWithSeconds(const std::string& text);

/// Writes a setting given on a command line as "KEY=VALUE".
/// @throws UsageError for an unknown key, and for a value that is not a number or is out of range
void applySetting(NearestSettings& settings, std::string_view argument);

/// The same for several, one after another.
/// @throws as `applySetting`
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
/// @throws UsageError for anything else, and for values that are out of range
SettingSweep sweepOf(std::string_view argument);

}  // namespace nearcast::cli
