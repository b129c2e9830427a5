// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Columns.h"

#include "evaluate/Table.h"

namespace nearcast::cli {

std::vector<std::string> withFigures(std::vector<std::string> names) {
    for (const char* name :
         {"right %", "of answered %", "wrong/min", "median s", "90th s", "changes", "never", "minutes"}) {
        names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> withFigures(std::vector<std::string> cells, const lab::Score& score) {
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

std::vector<std::string> sweepNames(const Evaluation& evaluation) {
    std::vector<std::string> names;
    for (const SettingSweep& sweep : evaluation.sweeps) {
        const std::string unit(sweep.setting->unit);
        names.push_back(std::string(sweep.setting->name) + (unit.empty() ? "" : " " + unit));
    }
    return names;
}

}  // namespace nearcast::cli
