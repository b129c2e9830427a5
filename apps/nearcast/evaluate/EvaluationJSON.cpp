// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationText.h"
#include "evaluate/JSONFigures.h"

namespace nearcast::cli {

namespace {

using lab::Score;

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

JSON asJSON(const RuleScores& scores) {
    JSON result = {{"rule", scores.rule}, {"recordings", JSON::array()}, {"total", asJSON(scores.total)}};
    for (const Score& score : scores.each) result["recordings"].push_back(asJSON(score));
    return result;
}

JSON asJSON(const SweepScores& point, const Evaluation& evaluation) {
    JSON result = {{"settings", JSON::object()}, {"total", asJSON(point.total)}};
    for (std::size_t place = 0; place < point.values.size(); ++place) {
        result["settings"][std::string(evaluation.sweeps[place].setting->name)] = point.values[place];
    }
    return result;
}

}  // namespace

std::string JSONOf(const Evaluation& evaluation) {
    JSON result = {{"settings", settingsJSON(evaluation.settings)},
                   {"recordings", evaluation.recordings},
                   {"rules", JSON::array()},
                   {"sweep", JSON::array()}};
    for (const RuleScores& scores : evaluation.rules) result["rules"].push_back(asJSON(scores));
    for (const SweepScores& point : evaluation.points) result["sweep"].push_back(asJSON(point, evaluation));
    return result.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace nearcast::cli
