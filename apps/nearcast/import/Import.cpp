// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/AtomicFile.h"
#include "common/OwnInput.h"
#include "common/PlaybackFile.h"
#include "help/HelpText.h"
#include "platform/replay/JsonLines.h"

#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace nearcast::cli {

namespace {

struct ImportArguments {
    std::string capture;
    std::string services;
    std::string as;
    std::string output;
};

/// The capture with its options, also those given as options of the command line.
RadioString captureOf(const ImportArguments& arguments) {
    std::map<std::string, std::string> given;
    if (!arguments.services.empty()) given["services"] = arguments.services;
    if (!arguments.as.empty()) given["as"] = arguments.as;
    return recordingNamed(arguments.capture, given);
}

replay::ImportResult importTo(const RadioString& capture, const std::string& output) {
    const replay::RecordingOptions options = replay::RecordingOptions::parse(capture);
    if (isStandardOutput(output)) {
        auto result = replay::importRecording(capture.argument, options, [](std::string_view line) {
            writeOut(line);
            writeOut("\n");
        });
        finishOut();
        return result;
    }
    std::optional<AtomicFile> file;
    // Made with the first line, so that a capture that cannot be opened leaves the output alone.
    auto result = replay::importRecording(capture.argument, options, [&](std::string_view line) {
        if (!file) file.emplace(output);
        file->write(line);
        file->write("\n");
    });
    if (!file) file.emplace(output);
    file->commit();
    return result;
}

int import(const ImportArguments& arguments) {
    const RadioString capture = captureOf(arguments);
    refuseOwnInput(arguments.output, {capture.argument});
    const replay::ImportResult result = importTo(capture, arguments.output);
    if (result.damage) throw std::runtime_error(*result.damage);
    if (!isStandardOutput(arguments.output)) {
        const std::string count = std::to_string(result.reports) + " reports written to " + arguments.output;
        const std::string malformed = " (" + std::to_string(result.malformed) + " of them broke off inside)";
        complain("import", count + (result.malformed != 0 ? malformed : ""), exitGood);
    }
    return exitGood;
}

}  // namespace

void addImport(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("import", "Turn a recording of any kind into JSON Lines");
    auto arguments = std::make_shared<ImportArguments>();
    command
        ->add_option("CAPTURE", arguments->capture,
                     "btsnoop, pcap, pcapng or JSON Lines; options may follow as in 'CAPTURE?as=dongles'")
        ->required();
    command->add_option("--services", arguments->services, "any: let every report pass the service filter")
        ->type_name("any");
    command->add_option("--as", arguments->as, "dongles: let every sender play a dongle with its own address")
        ->type_name("dongles");
    command
        ->add_option(
            "-o,--output", arguments->output,
            "File to write once the capture is read, of a damaged one up to the damage; standard output if absent")
        ->type_name("FILE");
    setExamples(*command, {"nearcast import shop.pcapng -o shop.jsonl",
                           "nearcast import phone.btsnoop --as dongles --services any -o phone.jsonl"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return import(*arguments); }; });
}

}  // namespace nearcast::cli
