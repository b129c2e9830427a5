// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationPage.h"

#include "evaluate/Chart.h"
#include "evaluate/Columns.h"
#include "evaluate/PageAssets.h"
#include "evaluate/Table.h"
#include "lab/Rule.h"

namespace nearcast::cli {

namespace {

using lab::Score;

std::string element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

/// A table whose first columns are given, and the figures.
class HTMLTable {
public:
    explicit HTMLTable(const std::vector<std::string>& names) {
        text_ = "<div class=\"wide\"><table>\n<thead><tr>";
        for (const std::string& name : names) text_ += "<th scope=\"col\">" + escaped(name) + "</th>";
        text_ += "</tr></thead>\n<tbody>\n";
    }
    void add(const std::vector<std::string>& cells, bool main) {
        text_ += main ? "<tr class=\"main\">" : "<tr>";
        for (const std::string& cell : cells) text_ += element("td", escaped(cell));
        text_ += "</tr>\n";
    }
    [[nodiscard]] std::string text() const { return text_ + "</tbody></table></div>\n"; }

private:
    std::string text_;
};

/// Rules and their figures, of one recording or of all.
template <class ScoreOf>
std::string rulesTable(const Evaluation& evaluation, const ScoreOf& scoreOf) {
    HTMLTable table(withFigures({"rule"}));
    for (const RuleScores& scores : evaluation.rules) {
        table.add(withFigures({scores.rule}, scoreOf(scores)), scores.rule == lab::nearestRuleName);
    }
    return table.text();
}

std::string recordingsTables(const Evaluation& evaluation) {
    std::string text;
    for (std::size_t place = 0; place < evaluation.recordings.size(); ++place) {
        text += "<details><summary>" + escaped(evaluation.recordings[place]) + "</summary>\n";
        text += rulesTable(evaluation, [place](const RuleScores& scores) { return scores.each[place]; });
        text += "</details>\n";
    }
    return text;
}

std::string sweepTable(const Evaluation& evaluation) {
    HTMLTable table(withFigures(sweepNames(evaluation)));
    for (const SweepScores& point : evaluation.points) {
        std::vector<std::string> cells;
        for (const double value : point.values) cells.push_back(shortest(value));
        table.add(withFigures(std::move(cells), point.total), false);
    }
    return table.text();
}

/// A quantity along the lower edge of a chart.
struct Along {
    const char* title;
    const char* name;
    std::optional<double> (*of)(const Score& score);
};

constexpr Along alongs[] = {
    {"Time right over wrong switches", "wrong switches a minute",
     [](const Score& score) { return score.wrongSwitchesPerMinute(); }},
    {"Time right over the time to follow a change", "median time to follow a change, s",
     [](const Score& score) { return score.timeToFollow(0.5); }},
};

std::string tipOf(const std::string& what, const Score& score) {
    return what + ": " + percent(score.rightOfAll()) + " % right, " + decimals(score.wrongSwitchesPerMinute(), 2) +
           " wrong switches/min, followed in " + decimals(score.timeToFollow(0.5), 1) + " s, " +
           std::to_string(score.neverReached) + " of " + std::to_string(score.changes) + " changes never reached";
}

void addPoint(ChartSeries& series, const Along& along, const std::string& what, const Score& score) {
    constexpr double hundred = 100;
    const auto x = along.of(score);
    const auto y = score.rightOfAll();
    if (x && y) series.points.push_back({*x, *y * hundred, tipOf(what, score)});
}

/// The setting's name and value.
std::string nameOf(const Evaluation& evaluation, std::size_t sweep, double value) {
    return std::string(evaluation.sweeps[sweep].setting->name) + " " + shortest(value);
}

/// A curve; of two settings one for each value of the first.
void addSweep(Chart& chart, const Evaluation& evaluation, const Along& along) {
    if (evaluation.sweeps.empty()) return;
    const bool grid = evaluation.sweeps.size() == 2;
    const std::size_t curves = grid ? evaluation.sweeps[0].values.size() : 1;
    const std::size_t points = evaluation.points.size() / curves;
    for (std::size_t curve = 0; curve < curves; ++curve) {
        ChartSeries series{std::string(evaluation.sweeps[0].setting->name), true, true, {}, {}};
        if (grid) {
            series.name = nameOf(evaluation, 0, evaluation.sweeps[0].values[curve]);
            series.shade = static_cast<double>(curve) / static_cast<double>(curves - 1);
        }
        for (std::size_t place = curve * points; place < (curve + 1) * points; ++place) {
            const SweepScores& point = evaluation.points[place];
            std::string what = nameOf(evaluation, 0, point.values[0]);
            if (grid) what += ", " + nameOf(evaluation, 1, point.values[1]);
            addPoint(series, along, what, point.total);
        }
        chart.series.push_back(std::move(series));
    }
}

std::string chartOf(const Evaluation& evaluation, const Along& along) {
    Chart chart{along.title, along.name, "time right, %", {}};
    for (const RuleScores& scores : evaluation.rules) {
        ChartSeries series{scores.rule, false, scores.rule == lab::nearestRuleName, {}, {}};
        addPoint(series, along, scores.rule, scores.total);
        chart.series.push_back(std::move(series));
    }
    addSweep(chart, evaluation, along);
    std::string far;
    for (const std::string& name : dropFar(chart)) far += (far.empty() ? "" : ", ") + name;
    const std::string picture = SVGOf(chart);
    if (picture.empty()) return "";
    std::string text = "<figure><figcaption>" + escaped(chart.title) + "</figcaption>\n" + picture + legendOf(chart);
    if (!far.empty()) text += "<p class=\"far\">Too far away to be shown: " + escaped(far) + ".</p>\n";
    return text + "</figure>\n";
}

std::string charts(const Evaluation& evaluation) {
    std::string text;
    for (const Along& along : alongs) text += chartOf(evaluation, along);
    return text.empty() ? "" : "<div class=\"charts\">\n" + text + "</div>\n";
}

std::string settingsLine(const NearestSettings& settings) {
    std::string text;
    for (const NearestSetting& setting : nearestSettings()) {
        text.append(text.empty() ? "" : ", ")
            .append(setting.name)
            .append(" ")
            .append(shortest(settings.*setting.value));
        if (!setting.unit.empty()) text.append(" ").append(setting.unit);
    }
    return text;
}

}  // namespace

std::string pageOf(const Evaluation& evaluation) {
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    page +=
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
        "script-src 'unsafe-inline'\">\n";
    page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
    page += "<title>Who is nearest</title>\n<style>" + std::string(pageStyle) + "</style>\n</head>\n<body>\n";
    const std::size_t count = evaluation.recordings.size();
    page += element("h1", "Who is nearest") + "\n";
    page +=
        element("p", "Measured on " + std::to_string(count) + (count == 1 ? " recording" : " recordings") + ".") + "\n";
    page += charts(evaluation);
    page += element("h2", "All recordings") + "\n";
    page += rulesTable(evaluation, [](const RuleScores& scores) { return scores.total; });
    if (!evaluation.points.empty()) page += element("h2", "Settings of nearest") + "\n" + sweepTable(evaluation);
    page += element("h2", "Each recording") + "\n" + recordingsTables(evaluation);
    page += element("h2", "Settings") + "\n" + element("p", escaped(settingsLine(evaluation.settings))) + "\n";
    page += "<div id=\"tip\" role=\"status\" hidden></div>\n";
    return page + "<script>" + std::string(pageScript) + "</script>\n</body>\n</html>\n";
}

}  // namespace nearcast::cli
