// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Progress.h"
#include "common/files/OwnInput.h"
#include "common/files/PlaybackFile.h"
#include "common/files/RecordingOutput.h"
#include "help/HelpText.h"
#include "platform/files/ByteSource.h"
#include "platform/replay/JsonLines.h"
#include "platform/system/AtomicFile.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace nearcast::cli {

namespace {

struct ImportArguments {
    std::string capture;
    std::string services;
    std::string as;
    std::string output;
    std::string format;
};

/// The capture with its options, also those given as options of the command line.
RadioString captureOf(const ImportArguments& arguments) {
    std::map<std::string, std::string> given;
    if (!arguments.services.empty()) given["services"] = arguments.services;
    if (!arguments.as.empty()) given["as"] = arguments.as;
    return recordingNamed(arguments.capture, given);
}

/// What is written. It is made with the first item, so that a capture that cannot be opened leaves the output alone.
class ImportOutput {
public:
    ImportOutput(std::string path, RecordingForm form) : path_(std::move(path)), form_(form) {}

    /// @param begin the recording's time zero since 1970, where it is known
    void write(const replay::RecordedItem& item, std::optional<std::chrono::microseconds> begin) {
        if (!writer_) open(begin);
        writer_->write(item);
    }
    void finish() {
        if (!writer_) open(std::nullopt);
        output_->finish();
        file_ ? file_->commit() : finishOut();
    }

private:
    void open(std::optional<std::chrono::microseconds> begin) {
        if (!isStandardOutput(path_)) file_.emplace(path_);
        output_.emplace(
            form_, [this](std::string_view bytes) { file_ ? file_->write(bytes) : writeOut(bytes); }, false);
        writer_ = output_->writer(begin.value_or(std::chrono::microseconds(0)));
    }

    const std::string path_;
    const RecordingForm form_;
    std::optional<AtomicFile> file_;
    std::optional<RecordingOutput> output_;
    std::unique_ptr<replay::RecordingWriter> writer_;
};

replay::ImportResult importTo(const RadioString& capture, ImportOutput& output, bool showProgress) {
    const replay::RecordingOptions options = replay::RecordingOptions::parse(capture);
    const std::string name = nameOfInput(capture.argument);
    const auto reader = replay::openRecording(capture.argument);
    Progress progress(showProgress);
    Tally tally;
    auto result = replay::copyRecording(*reader, name, options, [&](const replay::RecordedItem& item) {
        output.write(item, reader->begin());
        if (std::holds_alternative<replay::RecordedReport>(item)) ++tally.advertisements;
        tally.length = replay::timeOf(item);
        progress.show([&] { return "reading " + name + ": " + tally.text(); });
    });
    output.finish();
    return result;
}

int import(const ImportArguments& arguments) {
    const RecordingForm form = recordingFormOf(arguments.output, arguments.format);
    const RadioString capture = captureOf(arguments);
    refuseOwnInput(arguments.output, {capture.argument});
    ImportOutput output(arguments.output, form);
    const replay::ImportResult result = importTo(capture, output, !isTerminal(arguments.output));
    const std::string malformed = "; " + std::to_string(result.malformed) + " of them broke off inside";
    sayWritten("import", arguments.output,
               Tally{result.reports, result.end}.text() + (result.malformed != 0 ? malformed : ""));
    if (result.damage) throw std::runtime_error(*result.damage);
    return exitGood;
}

}  // namespace

void addImport(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("import", "Turn a recording of any kind into one of another");
    auto arguments = std::make_shared<ImportArguments>();
    command
        ->add_option("CAPTURE", arguments->capture,
                     "btsnoop, pcap, pcapng or JSON Lines, packed by gzip or not; - is standard input; options may "
                     "follow as in 'CAPTURE?as=dongles'")
        ->required();
    command->add_option("--services", arguments->services, "any: let every report pass the service filter")
        ->type_name("any");
    command->add_option("--as", arguments->as, "dongles: let every sender play a dongle with its own address")
        ->type_name("dongles");
    addRecordingOptions(*command, "File to write once the capture is read, of a damaged one up to the damage",
                        arguments->output, arguments->format);
    setExamples(*command, {"nearcast import shop.pcapng -o shop.jsonl",
                           "nearcast import phone.btsnoop --as dongles --services any -o phone.jsonl"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return import(*arguments); }; });
}

}  // namespace nearcast::cli
