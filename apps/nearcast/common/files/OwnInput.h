// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace nearcast::cli {

/// Refuses to write over what a command reads: the same file, by whatever name or link. Call it before anything is
/// written.
/// @param output as an option `--output` says it: standard output where it is empty or "-"
/// @param inputs paths, "-" being standard input; empty ones, and what is not there, are passed over
/// @throws UsageError naming the input
void refuseOwnInput(const std::string& output, const std::vector<std::string>& inputs);

/// Refuses standard input where it is to be read twice, as "-": the second time nothing would be left.
/// @param inputs paths
/// @throws UsageError
void refuseStandardInputTwice(const std::vector<std::string>& inputs);

/// The path of a recording that options may follow, as in "shop.pcapng?as=dongles".
/// @throws std::invalid_argument for options that are not understood
std::string fileOfRecording(const std::string& argument);

/// The file that a radio string names, a recording or a scene; empty where it names none.
/// @throws std::invalid_argument for a radio string that is not understood
std::string fileOfRadio(const std::string& radio);

}  // namespace nearcast::cli
