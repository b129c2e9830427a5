// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationText.h"

#include "evaluate/Table.h"

namespace nearcast::cli {

namespace {

using nearest::Score;

Table tableOf(std::vector<std::string> names) {
    for (const char* name :
         {"right %", "of answered %", "wrong/min", "median s", "90th s", "changes", "never", "minutes"}) {
        names.emplace_back(name);
    }
    return Table(std::move(names));
}

void addRow(Table& table, std::vector<std::string> cells, const Score& score) {
    cells.push_back(percent(score.rightOfAll()));
    cells.push_back(percent(score.rightOfAnswered()));
    cells.push_back(decimals(score.wrongSwitchesPerMinute(), 2));
    cells.push_back(decimals(score.timeToFollow(0.5), 1));
    cells.push_back(decimals(score.timeToFollow(0.9), 1));
    cells.push_back(std::to_string(score.changes));
    cells.push_back(std::to_string(score.neverReached));
    cells.push_back(decimals(score.minutes(), 1));
    table.add(std::move(cells));
}

std::string sweepText(const Evaluation& evaluation) {
    std::vector<std::string> names;
    for (const SettingSweep& sweep : evaluation.sweeps) {
        const std::string unit(sweep.setting->unit);
        names.push_back(std::string(sweep.setting->name) + (unit.empty() ? "" : " " + unit));
    }
    Table table = tableOf(std::move(names));
    for (const SweepScores& point : evaluation.points) {
        std::vector<std::string> cells;
        for (const double value : point.values) cells.push_back(shortest(value));
        addRow(table, std::move(cells), point.total);
    }
    return table.text();
}

std::string rulesText(const Evaluation& evaluation, std::size_t recording) {
    Table table = tableOf({"rule"});
    for (const RuleScores& scores : evaluation.rules) addRow(table, {scores.rule}, scores.each[recording]);
    return table.text();
}

}  // namespace

std::string textOf(const Evaluation& evaluation) {
    if (!evaluation.sweeps.empty()) return sweepText(evaluation);
    std::string text;
    for (std::size_t place = 0; place < evaluation.recordings.size(); ++place) {
        text += evaluation.recordings[place] + "\n" + rulesText(evaluation, place) + "\n";
    }
    if (evaluation.recordings.size() > 1) {
        Table table = tableOf({"rule"});
        for (const RuleScores& scores : evaluation.rules) addRow(table, {scores.rule}, scores.total);
        text += "all " + std::to_string(evaluation.recordings.size()) + " recordings\n" + table.text() + "\n";
    }
    text.pop_back();
    return text;
}

}  // namespace nearcast::cli
