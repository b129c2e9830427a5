// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace nearcast::cli {

/// How a command ends. `doctor` has statuses of its own: see `Verdict`.
enum ExitStatus : int {
    exitGood = 0,
    exitFailed = 1,  ///< what was asked for could not be done, or only in part
    exitUsage = 2,   ///< the command line, or a file given to it, is wrong
};

/// The command line is wrong, or a file that it names; the message says which and how. It ends the command with
/// `exitUsage`, as every `std::invalid_argument` does: the library throws those for what its user gave it, such as a
/// radio string or a setting. Any other exception says that something could not be done and ends with `exitFailed`.
/// A command lets both through to `runCommandLine`, which says the message.
class UsageError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

}  // namespace nearcast::cli
