// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/OwnInput.h"
#include "common/PlaybackLines.h"
#include "lab/Runner.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::cli {

namespace {

struct RunArguments {
    std::vector<std::string> files;
    lab::RunOptions options;
};

int run(const RunArguments& arguments) {
    refuseOwnInput("", arguments.files);
    refuseStandardInputTwice(arguments.files);
    PlaybackLines lines(arguments.files);
    lab::run(lines, arguments.options, writeOut);
    finishOut();
    if (!lines.damage().empty()) throw std::runtime_error(lines.damage());
    return exitGood;
}

}  // namespace

void addRun(CLI::App& application, Action& chosen) {
    auto* command =
        application.add_subcommand("run", "Run a scenario on a virtual clock and print what the manager shows");
    auto arguments = std::make_shared<RunArguments>();
    command
        ->add_option("FILE", arguments->files,
                     "Scenarios (JSON Lines) and recordings of any kind, run as one; - is standard input")
        ->required();
    command->add_flag("--trace", arguments->options.trace, "Print the trace records too");
    command->add_flag("--locks", arguments->options.locks, "Print the taking and releasing of the four locks too");
    command->callback([arguments, &chosen] { chosen = [arguments] { return run(*arguments); }; });
}

}  // namespace nearcast::cli
