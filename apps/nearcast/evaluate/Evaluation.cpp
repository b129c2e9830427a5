// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Evaluation.h"

#include "common/PlaybackFile.h"
#include "common/UsageError.h"
#include "lab/Rule.h"
#include "lines/LineReader.h"
#include "lines/Truth.h"

#include <filesystem>
#include <stdexcept>

namespace nearcast::cli {

namespace {

/// Reads the truth file that was named, or else the one beside the recording.
lines::Truth truthOf(JudgedRecording& recording, const std::string* named) {
    recording.truthPath = named != nullptr ? *named : truthPathFor(recording.path);
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

/// Appends a score for each combination of the values of the sweeps from `next` on.
void sweepFrom(std::size_t next, const std::vector<JudgedRecording>& recordings, NearestSettings settings,
               std::vector<double>& values, Evaluation& evaluation) {
    if (next == evaluation.sweeps.size()) {
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
        sweepFrom(next + 1, recordings, settings, values, evaluation);
        values.pop_back();
    }
}

}  // namespace

std::string truthPathFor(const std::string& recordingPath) {
    return std::filesystem::path(recordingPath).replace_extension(".truth.jsonl").string();
}

std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry) {
    if (!truths.empty() && truths.size() != recordings.size()) {
        throw UsageError(std::to_string(recordings.size()) + " recordings, but " + std::to_string(truths.size()) +
                         " truth files: one for each is needed");
    }
    std::vector<JudgedRecording> played;
    for (std::size_t place = 0; place < recordings.size(); ++place) {
        PlaybackFile file = readPlaybackFile(recordings[place], registry);
        JudgedRecording recording;
        recording.path = file.path;
        recording.damage = file.damage;
        recording.truth = truthOf(recording, truths.empty() ? nullptr : &truths[place]);
        recording.playback = lab::play(file.input);
        lab::requireKnown(recording.truth, recording.playback, recording.truthPath);
        played.push_back(std::move(recording));
    }
    return played;
}

Evaluation evaluate(const std::vector<JudgedRecording>& recordings, const std::vector<std::string>& rules,
                    const NearestSettings& settings, const std::vector<SettingSweep>& sweeps) {
    Evaluation evaluation;
    evaluation.settings = settings;
    evaluation.sweeps = sweeps;
    for (const JudgedRecording& recording : recordings) evaluation.recordings.push_back(recording.path);
    for (const std::string& name : rules) {
        RuleScores scores{name, {}, {}};
        for (const JudgedRecording& recording : recordings) {
            scores.each.push_back(judge(recording, ruleNamed(name), settings));
            scores.total += scores.each.back();
        }
        evaluation.rules.push_back(std::move(scores));
    }
    std::vector<double> values;
    if (!sweeps.empty()) sweepFrom(0, recordings, settings, values, evaluation);
    return evaluation;
}

}  // namespace nearcast::cli
