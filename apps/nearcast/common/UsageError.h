// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace nearcast::cli {

/// How a command ends: the same for all of them.
enum ExitStatus : int {
    exitGood = 0,
    exitFailed = 1,   ///< it could not be done, or only in part: a radio, a file of the system's, a damaged recording
    exitUsage = 2,    ///< wrong use, or a scenario, scene, truth or settings file that says something wrong
    exitWanting = 3,  ///< it was done, and what it looked at was found wanting
};

/// The command line is wrong; the message says what of it and how. It ends the command with `exitUsage` and a word on
/// where its help is.
///
/// Any other `std::invalid_argument` says that a file holds something wrong (`lines::InputError`,
/// `simulator::SceneError`) and ends with `exitUsage` too. All that is no `std::invalid_argument` says that something
/// could not be done and ends with `exitFailed`; so does a file that cannot be opened or read (`std::system_error`).
/// A command lets them all through to `runCommandLine`, which says the message.
class UsageError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

}  // namespace nearcast::cli
