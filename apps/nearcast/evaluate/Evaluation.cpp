// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Evaluation.h"

#include "common/UsageError.h"
#include "common/files/PlaybackFile.h"
#include "lab/Rule.h"
#include "lines/LineReader.h"
#include "lines/Truth.h"
#include "platform/files/ByteSource.h"

#include <filesystem>
#include <stdexcept>

namespace nearcast::cli {

namespace {

/// Reads the truth file that was named, or else the one beside the recording.
lines::Truth truthOf(JudgedRecording& recording, const std::string* named) {
    recording.truthPath = named != nullptr ? *named : truthPathFor(recording.path);
    if (named == nullptr && recording.path == "-") {
        throw std::invalid_argument(nameOfInput(recording.path) +
                                    ": where its user stood is not known; name a file with --truth");
    }
    if (named == nullptr && !std::filesystem::exists(recording.truthPath)) {
        throw UsageError(recording.path + ": where its user stood is not known: there is no " + recording.truthPath +
                         "; name another file with --truth");
    }
    return lines::readTruth(recording.truthPath);
}

lab::Score judge(const JudgedRecording& recording, const lab::NamedRule& named, const NearestSettings& settings) {
    const auto rule = named.make(*recording.playback.registry, settings);
    return lab::scoreOf(lab::answersOf(recording.playback, *rule), recording.truth);
}

const lab::NamedRule& ruleNamed(std::string_view name) {
    const auto* rule = lab::findRule(name);
    if (rule == nullptr) throw std::logic_error("there is no rule " + std::string(name));
    return *rule;
}

void show(Progress* progress, const std::string& text) {
    if (progress != nullptr) progress->show([&] { return text; });
}

/// Appends a score for each combination of the values of the sweeps from `next` on.
void sweepFrom(std::size_t next, const std::vector<JudgedRecording>& recordings, NearestSettings settings,
               std::vector<double>& values, Evaluation& evaluation, Progress* progress) {
    if (next == evaluation.sweeps.size()) {
        show(progress, "trying values: " + std::to_string(evaluation.points.size()) + " done");
        SweepScores point{values, {}};
        const auto& rule = ruleNamed(lab::nearestRuleName);
        for (const JudgedRecording& recording : recordings) point.total += judge(recording, rule, settings);
        evaluation.points.push_back(std::move(point));
        return;
    }
    const SettingSweep sweep = evaluation.sweeps[next];
    for (const double value : sweep.values) {
        settings.*sweep.setting->value = value;
        values.push_back(value);
        sweepFrom(next + 1, recordings, settings, values, evaluation, progress);
        values.pop_back();
    }
}

}  // namespace

std::string truthPathFor(const std::string& recordingPath) {
    std::filesystem::path path(recordingPath);
    const std::string ending = path.extension().string();
    if (ending.size() == 3 && (ending[1] | 32) == 'g' && (ending[2] | 32) == 'z') path.replace_extension();
    return path.replace_extension(".truth.jsonl").string();
}

std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry, Progress* progress) {
    if (!truths.empty() && truths.size() != recordings.size()) {
        throw UsageError(std::to_string(recordings.size()) + " recordings, but " + std::to_string(truths.size()) +
                         " truth files: one for each is needed");
    }
    std::vector<JudgedRecording> played;
    for (std::size_t place = 0; place < recordings.size(); ++place) {
        PlaybackFile file = readPlaybackFile(recordings[place], registry, progress);
        JudgedRecording recording;
        recording.path = file.path;
        recording.tally = file.tally;
        recording.damage = file.damage;
        recording.truth = truthOf(recording, truths.empty() ? nullptr : &truths[place]);
        show(progress, "playing " + file.name + ": " + file.tally.text());
        recording.playback = lab::play(file.input);
        lab::requireKnown(recording.truth, recording.playback, recording.truthPath);
        played.push_back(std::move(recording));
    }
    return played;
}

Evaluation evaluate(const std::vector<JudgedRecording>& recordings, const std::vector<std::string>& rules,
                    const NearestSettings& settings, const std::vector<SettingSweep>& sweeps, Progress* progress) {
    Evaluation evaluation;
    evaluation.settings = settings;
    evaluation.sweeps = sweeps;
    for (const JudgedRecording& recording : recordings) evaluation.recordings.push_back(nameOfInput(recording.path));
    for (const std::string& name : rules) {
        show(progress, "judging: rule " + name);
        RuleScores scores{name, {}, {}};
        for (const JudgedRecording& recording : recordings) {
            scores.each.push_back(judge(recording, ruleNamed(name), settings));
            scores.total += scores.each.back();
        }
        evaluation.rules.push_back(std::move(scores));
    }
    std::vector<double> values;
    if (!sweeps.empty()) sweepFrom(0, recordings, settings, values, evaluation, progress);
    return evaluation;
}

}  // namespace nearcast::cli
