// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/OwnInput.h"
#include "lab/Runner.h"
#include "lines/TextReader.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace nearcast::cli {

namespace {

struct RunArguments {
    std::vector<std::string> files;
    lab::RunOptions options;
};

int run(const RunArguments& arguments) {
    std::vector<std::string> inputs = arguments.files;
    std::replace(inputs.begin(), inputs.end(), std::string("-"), std::string("/dev/stdin"));
    refuseOwnInput("", inputs);
    lab::run(arguments.files, arguments.options, writeOut);
    finishOut();
    return exitGood;
}

}  // namespace

void addRun(CLI::App& application, Action& chosen) {
    auto* command =
        application.add_subcommand("run", "Run a scenario on a virtual clock and print what the manager shows");
    auto arguments = std::make_shared<RunArguments>();
    command->add_option("FILE", arguments->files, "Scenario files (JSON Lines), run as one; - is standard input")
        ->required();
    command->add_flag("--trace", arguments->options.trace, "Print the trace records too");
    command->add_flag("--locks", arguments->options.locks, "Print the taking and releasing of the four locks too");
    command->callback([arguments, &chosen] { chosen = [arguments] { return run(*arguments); }; });
}

}  // namespace nearcast::cli
