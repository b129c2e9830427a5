// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/files/FileKind.h"
#include "common/files/OwnInput.h"
#include "common/files/PlaybackLines.h"
#include "help/HelpText.h"
#include "lab/Runner.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

namespace {

struct RunArguments {
    std::vector<std::string> files;
    lab::RunOptions options;
};

constexpr const char* nothingShown =
    "nothing was shown: a scenario sets a delegate and starts a scan; a recording alone is for 'nearcast watch --radio "
    "replay:FILE'";

int run(const RunArguments& arguments) {
    refuseOwnInput("", arguments.files);
    refuseStandardInputTwice(arguments.files);
    PlaybackLines lines(arguments.files);
    // Shared with what the manager is watched by, which lives as long as the process.
    const auto shown = std::make_shared<bool>(false);
    try {
        lab::run(lines, arguments.options, [shown](std::string_view text) {
            *shown = *shown || !text.empty();
            writeOut(text);
        });
    } catch (const replay::NoRecording& error) {
        throw lines::InputError(error.what());
    } catch (const lines::InputError& error) {
        throw lines::InputError(error.what() + (arguments.files.size() == 1 ? whatItIs(arguments.files[0]) : ""));
    }
    finishOut();
    if (!lines.damage().empty()) throw std::runtime_error(lines.damage());
    if (!*shown) complain("run", nothingShown, exitGood);
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
    setExamples(*command, {"nearcast run scenario.jsonl", "nearcast run setup.jsonl shop.jsonl --trace"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return run(*arguments); }; });
}

}  // namespace nearcast::cli
