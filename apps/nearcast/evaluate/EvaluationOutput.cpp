// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationOutput.h"

#include "common/JSONText.h"
#include "common/Words.h"
#include "evaluate/Figures.h"
#include "lab/Rule.h"

namespace nearcast::cli {

namespace {

using lab::Score;

/// The names of columns, followed by those of the figures.
std::vector<std::string> withFigures(std::vector<std::string> names) {
    for (const char* name :
         {"right %", "of answered %", "wrong/min", "median s", "90th s", "changes", "never", "minutes"}) {
        names.emplace_back(name);
    }
    return names;
}

/// The cells of a row, followed by its figures.
std::vector<std::string> withFigures(std::vector<std::string> cells, const Score& score) {
    cells.push_back(percent(score.rightOfAll()));
    cells.push_back(percent(score.rightOfAnswered()));
    cells.push_back(decimals(score.wrongSwitchesPerMinute(), 2));
    cells.push_back(decimals(score.timeToFollow(0.5), 1));
    cells.push_back(decimals(score.timeToFollow(0.9), 1));
    cells.push_back(std::to_string(score.changes));
    cells.push_back(std::to_string(score.neverReached));
    cells.push_back(decimals(score.minutes(), 1));
    return cells;
}

std::string sweepText(const Evaluation& evaluation) {
    std::vector<std::string> names;
    for (const SettingSweep& sweep : evaluation.sweeps) {
        const std::string unit(sweep.setting->unit);
        names.push_back(std::string(sweep.setting->name) + (unit.empty() ? "" : " " + unit));
    }
    Table table(withFigures(std::move(names)));
    for (const SweepScores& point : evaluation.points) {
        std::vector<std::string> cells;
        for (const double value : point.values) cells.push_back(shortest(value));
        table.add(withFigures(std::move(cells), point.total));
    }
    return table.text();
}

template <class ScoreOf>
std::string rulesText(const Evaluation& evaluation, const ScoreOf& scoreOf) {
    Table table(withFigures({"rule"}));
    for (const RuleScores& scores : evaluation.rules) table.add(withFigures({scores.rule}, scoreOf(scores)));
    return table.text();
}

JSON asJSON(const Score& score) {
    return {{"rightPercent", percentJSON(score.rightOfAll())},
            {"rightOfAnsweredPercent", percentJSON(score.rightOfAnswered())},
            {"wrongSwitchesPerMinute", roundedJSON(score.wrongSwitchesPerMinute())},
            {"medianSecondsToFollow", roundedJSON(score.timeToFollow(0.5))},
            {"ninetiethSecondsToFollow", roundedJSON(score.timeToFollow(0.9))},
            {"changes", score.changes},
            {"neverReached", score.neverReached},
            {"wrongSwitches", score.wrongSwitches},
            {"minutes", roundedJSON(score.minutes())}};
}

JSON rulesJSON(const Evaluation& evaluation) {
    JSON result = JSON::array();
    for (const RuleScores& scores : evaluation.rules) {
        JSON rule = {{"rule", scores.rule}, {"recordings", JSON::array()}, {"total", asJSON(scores.total)}};
        for (const Score& score : scores.each) rule["recordings"].push_back(asJSON(score));
        result.push_back(std::move(rule));
    }
    return result;
}

}  // namespace

std::string textOf(const Evaluation& evaluation) {
    if (!evaluation.sweeps.empty()) return sweepText(evaluation);
    std::string text;
    for (std::size_t place = 0; place < evaluation.recordings.size(); ++place) {
        if (place != 0) text += "\n";
        text += printable(evaluation.recordings[place]);
        text += "\n";
        text += rulesText(evaluation, [place](const RuleScores& scores) { return scores.each[place]; });
    }
    if (evaluation.recordings.size() == 1) return text;
    text += "\nall " + std::to_string(evaluation.recordings.size()) + " recordings\n";
    return text + rulesText(evaluation, [](const RuleScores& scores) { return scores.total; });
}

std::string JSONOf(const Evaluation& evaluation) {
    JSON result = {{"settings", settingsJSON(evaluation.settings)},
                   {"recordings", evaluation.recordings},
                   {"rules", rulesJSON(evaluation)},
                   {"sweep", JSON::array()}};
    for (const SweepScores& point : evaluation.points) {
        JSON settings = JSON::object();
        for (std::size_t place = 0; place < point.values.size(); ++place) {
            settings[std::string(evaluation.sweeps[place].setting->name)] = point.values[place];
        }
        result["sweep"].push_back({{"settings", std::move(settings)}, {"total", asJSON(point.total)}});
    }
    return textOf(result) + "\n";
}

std::string pageDataOf(const Evaluation& evaluation, const std::string& program) {
    JSON result = {{"format", 1},
                   {"program", program},
                   {"main", lab::nearestRuleName},
                   {"recordings", evaluation.recordings},
                   {"settings", JSON::array()},
                   {"rules", rulesJSON(evaluation)},
                   {"sweeps", JSON::array()},
                   {"points", JSON::array()}};
    for (const NearestSetting& setting : nearestSettings()) {
        result["settings"].push_back(
            {{"name", setting.name}, {"value", evaluation.settings.*setting.value}, {"unit", setting.unit}});
    }
    for (const SettingSweep& sweep : evaluation.sweeps) {
        result["sweeps"].push_back({{"name", sweep.setting->name}, {"unit", sweep.setting->unit}});
    }
    for (const SweepScores& point : evaluation.points) {
        result["points"].push_back({{"values", point.values}, {"total", asJSON(point.total)}});
    }
    return textOf(result);
}

}  // namespace nearcast::cli
