// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace nearcast::cli {

/// Adds the option `--radio` to a command. Every command that listens has it in this form, and `runCommandLine` checks
/// its value before the command begins.
void addRadioOption(CLI::App& command, std::string& radio);

/// Checks a radio string with all its options, without opening anything.
/// @throws UsageError saying what is wrong, and what was probably meant
void requireRadio(const std::string& radio);

/// The radio string that was probably meant by a word: itself where it is one, a file that is there with what plays it,
/// an adapter's name, or what is only a few letters away.
/// @return empty where none is close
std::string radioMeantBy(const std::string& word);

}  // namespace nearcast::cli
