// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string_view>

namespace CLI {
class App;
}

namespace nearcast::cli {

/// How a command ends.
enum ExitStatus : int {
    exitGood = 0,
    exitFailed = 1,  ///< what was asked for could not be done, or only in part
    exitUsage = 2,   ///< the command line, or a file given to it, is wrong
};

/// What a command does once its arguments are known; gives the exit status.
using Action = std::function<int()>;

/// The whole command line: reads it, runs the command, and gives the exit status. Nothing is thrown.
int runCommandLine(int argc, char** argv);

// Each adds its command to the application; `chosen` is set to its action when the command line names it.
void addRun(CLI::App& application, Action& chosen);
void addWatch(CLI::App& application, Action& chosen);
void addDoctor(CLI::App& application, Action& chosen);
void addRadios(CLI::App& application, Action& chosen);
void addRecord(CLI::App& application, Action& chosen);
void addImport(CLI::App& application, Action& chosen);
void addScene(CLI::App& application, Action& chosen);
void addEvaluate(CLI::App& application, Action& chosen);
void addReport(CLI::App& application, Action& chosen);

/// Writes to standard output.
/// @throws std::system_error when it cannot be written
void writeOut(std::string_view text);
/// Makes sure that all of it has been written.
/// @throws std::system_error when it cannot be written
void finishOut();
/// Says what went wrong, on standard error, after all that was written before; gives `status` back.
int complain(std::string_view command, std::string_view problem, ExitStatus status);

}  // namespace nearcast::cli
