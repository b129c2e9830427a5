// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationText.h"

#include "common/Words.h"
#include "evaluate/Columns.h"
#include "evaluate/Table.h"

namespace nearcast::cli {

namespace {

std::string sweepText(const Evaluation& evaluation) {
    Table table(withFigures(sweepNames(evaluation)));
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

}  // namespace nearcast::cli
