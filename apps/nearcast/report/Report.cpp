// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Output.h"
#include "common/Progress.h"
#include "common/files/OwnInput.h"
#include "common/files/PlaybackFile.h"
#include "common/files/SettingsFile.h"
#include "help/HelpText.h"
#include "lines/Truth.h"
#include "platform/system/AtomicFile.h"
#include "report/ReportData.h"
#include "web/Page.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::cli {

namespace {

struct ReportArguments {
    std::string recording;
    std::string output;
    std::string settings;
    std::vector<std::string> set;
    std::string truth;
    std::string title;
};

void writePage(const std::string& page, const std::string& output) {
    if (isStandardOutput(output)) {
        writeOut(page);
        finishOut();
        return;
    }
    AtomicFile file(output);
    file.write(page);
    file.commit();
}

ReportData dataOf(const ReportArguments& arguments, const NearestSettings& settings, const PlaybackFile& file,
                  const lines::Truth* truth, Progress& progress) {
    progress.show([&] { return "playing " + file.name + ": " + file.tally.text(); });
    ReportData data = reportOf(lab::play(file.input), settings, truth);
    data.title = arguments.title.empty() ? std::filesystem::path(file.name).filename().string() : arguments.title;
    return data;
}

/// Plays the recording and writes its page.
/// @return why the recording ends before its end; empty when it does not
std::string makeReport(const ReportArguments& arguments) {
    requirePlot(pageAssets());
    const std::vector<std::string> inputs{fileOfRecording(arguments.recording), arguments.settings, arguments.truth};
    refuseOwnInput(arguments.output, inputs);
    refuseStandardInputTwice(inputs);
    const NearestSettings settings = settingsOf(arguments.set);
    const auto registry = arguments.settings.empty() ? nullptr : registryOfFile(arguments.settings, "report");
    std::optional<lines::Truth> truth;
    if (!arguments.truth.empty()) truth = lines::readTruth(arguments.truth);
    Progress progress;
    const PlaybackFile file = readPlaybackFile(arguments.recording, registry, &progress);
    const ReportData data = dataOf(arguments, settings, file, truth ? &*truth : nullptr, progress);
    const std::string program = programName();
    writePage(writtenPage(pageAssets(), {"report", data.title, program, JSONOf(data, program)}), arguments.output);
    progress.clear();
    sayWritten("report", arguments.output, file.tally.text());
    return file.damage;
}

int report(const ReportArguments& arguments) {
    if (arguments.output.empty() && isTerminal(arguments.output)) {
        throw UsageError("a page is nothing for a terminal; name its file with --output");
    }
    const std::string damage = makeReport(arguments);
    if (!damage.empty()) throw std::runtime_error(damage);
    return exitGood;
}

}  // namespace

void addReport(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand(
        "report", "Make a page of a recording: its signals, and who was decided to be nearest");
    auto arguments = std::make_shared<ReportArguments>();
    command
        ->add_option("RECORDING", arguments->recording,
                     "A recording of any kind, or a scenario; - is standard input; options may follow as in "
                     "'FILE?as=dongles'")
        ->required();
    command
        ->add_option("-o,--output", arguments->output,
                     "Page to write (HTML), whole or not at all; standard output if absent or -, not to a terminal if "
                     "absent")
        ->type_name("FILE")
        ->check(problemWithOutput);
    command
        ->add_option("--settings", arguments->settings,
                     "Registered devices, as the manager saves them; without it every dongle is registered")
        ->type_name("FILE");
    command->add_option("--set", arguments->set, "A setting of the decision; may be given several times")
        ->allow_extra_args(false)
        ->take_all()
        ->type_name("KEY=VALUE");
    command->add_option("--truth", arguments->truth, "Where the user stood, to be shown beside the decision")
        ->type_name("FILE");
    command->add_option("--title", arguments->title, "The page's title; the recording's name if absent")
        ->type_name("TEXT");
    setExamples(*command, {"nearcast report shop.jsonl -o shop.html",
                           "nearcast report 'phone.btsnoop?as=dongles' --set patience=3 -o phone.html"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return report(*arguments); }; });
}

}  // namespace nearcast::cli
