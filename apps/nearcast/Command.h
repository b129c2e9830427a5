// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/Output.h"
#include "common/UsageError.h"

#include <functional>

namespace CLI {
class App;
}

namespace nearcast::cli {

/// What a command does once its arguments are known; gives the exit status. What it throws ends it: see `UsageError`.
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

}  // namespace nearcast::cli
