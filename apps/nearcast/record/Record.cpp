// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Interruption.h"
#include "common/Progress.h"
#include "common/Words.h"
#include "common/files/OwnInput.h"
#include "common/files/RecordingOutput.h"
#include "common/radio/Listening.h"
#include "common/radio/RadioOption.h"
#include "common/radio/Readiness.h"
#include "help/HelpText.h"
#include "record/RecordSession.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr double stepSeconds = 3600;
constexpr double stepWithProgress = 0.25;

struct RecordArguments {
    std::string radio = "auto";
    std::string output;
    std::string format;
    std::optional<double> forSeconds;
};

RecordingOutput::Sink sinkFor(const RecordArguments& arguments) {
    if (isStandardOutput(arguments.output)) {
        return [](std::string_view bytes) {
            writeOut(bytes);
            finishOut();
        };
    }
    return [file = std::make_shared<GrowingFile>(arguments.output)](std::string_view bytes) { file->write(bytes); };
}

std::chrono::microseconds today() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch());
}

/// What is recorded, and where it goes. Shared with the radio's thread, which may use it until the radio is closed.
struct Recorder {
    Recorder(RecordingForm form, const RecordArguments& arguments, std::function<void()> broke)
        : output(form, sinkFor(arguments), true), session(output.writer(today()), std::move(broke)) {}

    RecordingOutput output;
    RecordSession session;
};

std::string progressText(const Listening& listening, RecordSession& session, std::optional<double> forSeconds) {
    const std::string text = Tally{session.reports(), listening.now()}.text();
    return forSeconds ? text + " of " + decimals(*forSeconds) + " s" : text;
}

/// Until the time is up, the recording that is played has ended, or something interrupts.
void passTime(Listening& listening, RecordSession& session, const RecordArguments& arguments) {
    Progress progress(!isTerminal(arguments.output));
    const double step = progress.shown() ? stepWithProgress : stepSeconds;
    bool more = true;
    while (more) {
        const double left = arguments.forSeconds ? *arguments.forSeconds - listening.seconds() : step;
        if (left <= 0) return;
        more = listening.runFor(std::min(left, step));
        progress.show([&] { return progressText(listening, session, arguments.forSeconds); });
    }
}

int tell(const Listening& listening, const Tally& tally, const RecordArguments& arguments, bool waited) {
    if (tally.advertisements == 0 && listening.failure().empty() &&
        listening.health().state != CBManagerStatePoweredOn) {
        throw std::runtime_error(nothingHeardInWords(listening.health(), waited));
    }
    sayWritten("record", arguments.output, tally.text());
    return listening.failure().empty() ? exitGood : exitFailed;  // as the console has said
}

int recordWith(Listening& listening, RecordingForm form, const RecordArguments& arguments) {
    const RadioHealth found =
        listening.open(arguments.radio, [](std::string_view line) { complain("record", line, exitGood); });
    if (readinessOf(found) == Readiness::missing) throw RadioMissing(found);
    const bool waits = readinessOf(found) == Readiness::awaited;
    if (waits) complain("record", awaitedInWords(found), exitGood);
    const auto recorder = std::make_shared<Recorder>(form, arguments, [&listening] { listening.interrupt(); });
    recorder->session.begin(listening.health().state);
    listening.begin({[recorder](const AdvertisingReport& report, auto at) { recorder->session.heard(report, at); },
                     [recorder](const RadioHealth& health, auto at) { recorder->session.changed(health, at); }});
    passTime(listening, recorder->session, arguments);
    const auto at = listening.now();
    listening.end();
    recorder->session.end(at);
    recorder->output.finish();
    return tell(listening, {recorder->session.reports(), at}, arguments, waits);
}

int record(const RecordArguments& arguments) {
    const RecordingForm form = recordingFormOf(arguments.output, arguments.format);
    Listening listening;
    const Interruption interruption([&] { listening.interrupt(); });
    refuseOwnInput(arguments.output, {fileOfRadio(arguments.radio)});
    return recordWith(listening, form, arguments);
}

}  // namespace

void addRecord(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("record", "Write down all that a radio hears, to be played again");
    auto arguments = std::make_shared<RecordArguments>();
    addRadioOption(*command, arguments->radio);
    addRecordingOptions(*command, "File to write", arguments->output, arguments->format);
    command->add_option("--for", arguments->forSeconds, "End after so many seconds of the radio's time")
        ->type_name("SECONDS")
        ->check(problemWithSeconds);
    setExamples(*command, {"nearcast record --for 600 -o shop.jsonl",
                           "nearcast record --radio 'simulator?speed=max' --for 600 -o walk.btsnoop"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return record(*arguments); }; });
}

}  // namespace nearcast::cli
