// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Output.h"
#include "common/Progress.h"
#include "common/UsageError.h"
#include "common/Words.h"
#include "common/files/OwnInput.h"
#include "common/files/PlaybackFile.h"
#include "common/files/SettingsFile.h"
#include "evaluate/Advice.h"
#include "evaluate/Evaluation.h"
#include "evaluate/EvaluationOutput.h"
#include "help/HelpText.h"
#include "lab/Rule.h"
#include "platform/system/AtomicFile.h"
#include "web/Page.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>

namespace nearcast::cli {

namespace {

constexpr std::size_t mostPoints = 10'000;

struct EvaluateArguments {
    std::vector<std::string> recordings;
    std::vector<std::string> truths;
    std::vector<std::string> rules;
    std::string settings;
    std::vector<std::string> set;
    std::vector<std::string> sweeps;
    bool json = false;
    bool listRules = false;
    bool advise = false;
    std::string write;
    std::string html;
};

int listRules() {
    std::size_t longest = 0;
    for (const lab::NamedRule& rule : lab::rules()) longest = std::max(longest, rule.name.size());
    for (const lab::NamedRule& rule : lab::rules()) {
        writeOut(std::string(rule.name) + std::string(longest + 2 - rule.name.size(), ' '));
        writeOut(std::string(rule.description) + "\n");
    }
    finishOut();
    return exitGood;
}

/// The rules of the command line; all rules where it names none.
std::vector<std::string> rulesOf(const EvaluateArguments& arguments) {
    std::string known;
    std::vector<std::string> all;
    for (const lab::NamedRule& rule : lab::rules()) {
        known.append(known.empty() ? "" : ", ").append(rule.name);
        all.emplace_back(rule.name);
    }
    for (const std::string& name : arguments.rules) {
        if (lab::findRule(name) != nullptr) continue;
        throw UsageError("there is no rule '" + name + "' (known: " + known + ")");
    }
    return arguments.rules.empty() ? all : arguments.rules;
}

std::vector<SettingSweep> sweepsOf(const EvaluateArguments& arguments) {
    if (arguments.sweeps.size() > 2) throw UsageError("two settings at most are swept at a time");
    std::vector<SettingSweep> sweeps;
    std::size_t points = 1;
    for (const std::string& argument : arguments.sweeps) {
        sweeps.push_back(sweepOf(argument));
        points *= sweeps.back().values.size();
    }
    if (sweeps.size() == 2 && sweeps[0].setting == sweeps[1].setting) {
        throw UsageError("'" + std::string(sweeps[0].setting->name) + "' is swept twice");
    }
    if (points > mostPoints) {
        throw UsageError("the sweeps have more than " + std::to_string(mostPoints) + " values together");
    }
    return sweeps;
}

int statusOf(const std::vector<JudgedRecording>& recordings) {
    int status = exitGood;
    for (const JudgedRecording& recording : recordings) {
        if (!recording.damage.empty()) status = complain("evaluate", recording.damage, exitFailed);
    }
    return status;
}

/// "2 recordings, 1234 advertisements, 60.0 s".
std::string summaryOf(const std::vector<JudgedRecording>& recordings) {
    Tally all;
    for (const JudgedRecording& recording : recordings) {
        all.advertisements += recording.tally.advertisements;
        all.length += recording.tally.length;
    }
    return counted(recordings.size(), "recording") + ", " + all.text();
}

/// The files that the recordings are made of, to which writing is refused.
std::vector<std::string> filesOf(const std::vector<JudgedRecording>& recordings) {
    std::vector<std::string> files;
    for (const JudgedRecording& recording : recordings) {
        files.push_back(recording.path);
        files.push_back(recording.truthPath);
    }
    return files;
}

/// Refuses outputs that are inputs, but for the settings of `--write`, which may be their own file.
void refuseOwnInputs(const EvaluateArguments& arguments, const std::vector<JudgedRecording>& recordings) {
    auto files = filesOf(recordings);
    if (!arguments.write.empty()) refuseOwnInput(arguments.write, files);
    files.push_back(arguments.settings);
    refuseOwnInput("", files);
    if (!arguments.html.empty()) refuseOwnInput(arguments.html, files);
}

void writeFile(const std::string& path, const std::string& content) {
    AtomicFile file(path);
    file.write(content);
    file.commit();
}

void writePage(const std::string& path, const Evaluation& evaluation) {
    const std::string program = programName();
    const Page page{"evaluate", "Who is nearest", program, pageDataOf(evaluation, program)};
    writeFile(path, writtenPage(pageAssets(), page));
}

int evaluateRules(const EvaluateArguments& arguments) {
    if (!arguments.html.empty()) requirePlot(pageAssets());
    const NearestSettings settings = settingsOf(arguments.set);
    const auto sweeps = sweepsOf(arguments);
    const auto rules = rulesOf(arguments);
    const auto registry = arguments.settings.empty() ? nullptr : registryOfFile(arguments.settings, "evaluate");
    Progress progress;
    const auto recordings = playAll(arguments.recordings, arguments.truths, registry, &progress);
    refuseOwnInputs(arguments, recordings);
    const Evaluation evaluation = evaluate(recordings, rules, settings, sweeps, &progress);
    progress.clear();
    writeOut(arguments.json ? JSONOf(evaluation) : textOf(evaluation));
    finishOut();
    sayWritten("evaluate", "", summaryOf(recordings));
    if (!arguments.html.empty()) {
        writePage(arguments.html, evaluation);
        sayWritten("evaluate", arguments.html, summaryOf(recordings));
    }
    return statusOf(recordings);
}

int adviseThresholds(const EvaluateArguments& arguments) {
    const NearestSettings settings = settingsOf(arguments.set);
    const auto registry = arguments.settings.empty() ? nullptr : registryOfFile(arguments.settings, "evaluate");
    Progress progress;
    const auto recordings = playAll(arguments.recordings, arguments.truths, registry, &progress);
    progress.clear();
    refuseOwnInputs(arguments, recordings);
    const auto advice = advise(recordings, settings);
    writeOut(arguments.json ? JSONOf(advice, settings) : textOf(advice));
    finishOut();
    sayWritten("evaluate", "", summaryOf(recordings));
    if (!arguments.write.empty()) {
        writeFile(arguments.write, settingsFileOf(withThresholds(*registry, advice)));
        sayWritten("evaluate", arguments.write, counted(registry->size(), "device"));
    }
    return statusOf(recordings);
}

std::vector<std::string> inputsOf(const EvaluateArguments& arguments) {
    std::vector<std::string> inputs = arguments.truths;
    inputs.push_back(arguments.settings);
    for (const std::string& recording : arguments.recordings) inputs.push_back(fileOfRecording(recording));
    return inputs;
}

int evaluate(const EvaluateArguments& arguments) {
    if (arguments.listRules) return listRules();
    if (arguments.recordings.empty()) throw UsageError("a RECORDING is needed, as in 'nearcast evaluate walk.jsonl'");
    refuseStandardInputTwice(inputsOf(arguments));
    return arguments.advise ? adviseThresholds(arguments) : evaluateRules(arguments);
}

/// An option that may be given several times, with one value each time.
CLI::Option* addRepeated(CLI::App& command, const char* name, std::vector<std::string>& values, const char* help) {
    return command.add_option(name, values, help)->allow_extra_args(false)->take_all();
}

void addInputs(CLI::App& command, EvaluateArguments& arguments) {
    command.add_option("RECORDING", arguments.recordings,
                       "Recordings of any kind, or scenarios; - is standard input; options may follow as in "
                       "'FILE?as=dongles'");
    addRepeated(command, "--truth", arguments.truths,
                "Where the user stood, one for each RECORDING; without it the file beside it, NAME.truth.jsonl")
        ->type_name("FILE");
    addRepeated(command, "--set", arguments.set, "A setting of the rule nearest")->type_name("KEY=VALUE");
}

}  // namespace

void addEvaluate(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("evaluate", "Measure who is nearest on recordings whose truth is known");
    auto arguments = std::make_shared<EvaluateArguments>();
    addInputs(*command, *arguments);
    auto* settings = command->add_option("--settings", arguments->settings,
                                         "Registered devices, as the manager saves them; without it every dongle is");
    settings->type_name("FILE");
    auto* rule = addRepeated(*command, "--rule", arguments->rules, "Only this rule, or these; see --list-rules");
    rule->type_name("NAME");
    auto* sweep = addRepeated(*command, "--sweep", arguments->sweeps,
                              "Try values of a setting of the rule nearest; given twice: a grid");
    sweep->type_name("KEY=FROM..TO[:STEPS]");
    auto* html = command->add_option("--html", arguments->html, "Write charts and tables as a page too");
    html->type_name("FILE")->check(problemWithOutput);
    auto* advise = command->add_flag("--advise", arguments->advise,
                                     "Propose thresholds; the user stood at one device after another");
    advise->excludes(rule)->excludes(sweep)->excludes(html);
    command->add_option("--write", arguments->write, "Write the settings with the proposed thresholds in them")
        ->type_name("FILE")
        ->check(problemWithOutput)
        ->needs(advise)
        ->needs(settings);
    command->add_flag("--json", arguments->json, "Print one JSON object");
    command->add_flag("--list-rules", arguments->listRules, "Print the rules and what they do");
    setExamples(*command, {"nearcast evaluate walk.jsonl --truth walk.truth.jsonl",
                           "nearcast evaluate walk.jsonl --sweep patience=0..12:13 --html patience.html",
                           "nearcast evaluate --advise stays.jsonl --settings devices.json --write devices.json"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return evaluate(*arguments); }; });
}

}  // namespace nearcast::cli
