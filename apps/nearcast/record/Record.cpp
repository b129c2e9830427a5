// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Interruption.h"
#include "common/Listening.h"
#include "common/OwnInput.h"
#include "common/Readiness.h"
#include "record/RecordSession.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace nearcast::cli {

namespace {

constexpr double stepSeconds = 3600;

struct RecordArguments {
    std::string radio = "auto";
    std::string output;
    std::optional<double> forSeconds;
};

replay::RecordingWriter::Out outTo(const RecordArguments& arguments) {
    if (isStandardOutput(arguments.output)) {
        return [](std::string_view bytes) {
            writeOut(bytes);
            finishOut();
        };
    }
    return [file = std::make_shared<GrowingFile>(arguments.output)](std::string_view bytes) { file->write(bytes); };
}

std::unique_ptr<replay::RecordingWriter> writerFor(const RecordArguments& arguments) {
    if (!arguments.output.ends_with(".btsnoop")) return replay::makeJsonLinesWriter(outTo(arguments));
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return replay::makeBtsnoopWriter(outTo(arguments), std::chrono::duration_cast<std::chrono::microseconds>(now));
}

/// Until the time is up, the recording that is played has ended, or something interrupts.
void passTime(Listening& listening, std::optional<double> forSeconds) {
    bool more = true;
    while (more) {
        const double left = forSeconds ? *forSeconds - listening.seconds() : stepSeconds;
        if (left <= 0) return;
        more = listening.runFor(std::min(left, stepSeconds));
    }
}

int tell(const Listening& listening, RecordSession& session, const RecordArguments& arguments, bool waited) {
    if (!listening.failure().empty()) return exitFailed;  // the console has said it
    if (session.reports() == 0 && listening.health().state != CBManagerStatePoweredOn) {
        throw std::runtime_error(nothingHeardInWords(listening.health(), waited));
    }
    if (isStandardOutput(arguments.output)) return exitGood;
    const std::string count = std::to_string(session.reports()) + " reports written to ";
    return complain("record", count + arguments.output, exitGood);
}

int recordWith(Listening& listening, const RecordArguments& arguments) {
    const RadioHealth found =
        listening.open(arguments.radio, [](std::string_view line) { complain("record", line, exitGood); });
    if (readinessOf(found) == Readiness::missing) throw RadioMissing(found);
    const bool waits = readinessOf(found) == Readiness::awaited;
    if (waits) complain("record", awaitedInWords(found), exitGood);
    // Shared with the radio's thread, which may use it until the radio is closed.
    const auto session = std::make_shared<RecordSession>(writerFor(arguments), [&listening] { listening.interrupt(); });
    session->begin(listening.health().state);
    listening.begin({[session](const AdvertisingReport& report, auto at) { session->heard(report, at); },
                     [session](const RadioHealth& health, auto at) { session->changed(health, at); }});
    passTime(listening, arguments.forSeconds);
    const auto at = listening.now();
    listening.end();
    session->end(at);
    return tell(listening, *session, arguments, waits);
}

int record(const RecordArguments& arguments) {
    Listening listening;
    const Interruption interruption([&] { listening.interrupt(); });
    refuseOwnInput(arguments.output, {fileOfRadio(arguments.radio)});
    return recordWith(listening, arguments);
}

}  // namespace

void addRecord(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("record", "Write down all that a radio hears, to be played again");
    auto arguments = std::make_shared<RecordArguments>();
    command->add_option("--radio", arguments->radio, "The radio to listen with")
        ->type_name("RADIO")
        ->capture_default_str();
    command
        ->add_option(
            "-o,--output", arguments->output,
            "File to write: btsnoop where its name ends in .btsnoop, else JSON Lines; standard output if absent")
        ->type_name("FILE");
    command->add_option("--for", arguments->forSeconds, "End after so many seconds of the radio's time")
        ->type_name("SECONDS")
        ->check(problemWithSeconds);
    command->callback([arguments, &chosen] { chosen = [arguments] { return record(*arguments); }; });
}

}  // namespace nearcast::cli
