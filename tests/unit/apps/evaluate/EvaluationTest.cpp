// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Chart.h"
#include "evaluate/Evaluation.h"
#include "evaluate/EvaluationPage.h"
#include "evaluate/EvaluationText.h"
#include "evaluate/Recordings.h"
#include "evaluate/Table.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

using Kind = lab::PlaybackEvent::Kind;

/// Ten seconds next to A, which is heard at -50 twice a second; B is heard at -70.
JudgedRecording recordingOf(const std::string& path) {
    JudgedRecording recording;
    recording.path = path;
    recording.truth = {{0, "A"}};
    recording.playback.dongles = {{"A", "BT:A", "", {}}, {"B", "BT:B", "", {}}};
    recording.playback.end = 9.5;
    for (double at = 0; at < 10; at += 0.5) {
        recording.playback.events.push_back({at, Kind::heard, 0, -50});
        recording.playback.events.push_back({at, Kind::heard, 1, -70});
    }
    const auto record = [](const char* address) {
        return std::make_shared<const SettingRecord>(SettingRecord{{"MAC Address", address}});
    };
    recording.playback.registry =
        std::make_shared<const Settings>(Settings{{"BT:A", record("A")}, {"BT:B", record("B")}});
    return recording;
}

Evaluation evaluateTwo(const std::vector<SettingSweep>& sweeps = {}) {
    std::vector<JudgedRecording> recordings{recordingOf("one"), recordingOf("two")};
    recordings[1].truth = {{0, "B"}};
    return evaluate(recordings, {"strongest-raw", "nearest"}, {}, sweeps);
}

TEST(Evaluation, EveryRuleIsScoredOnEachRecordingAndOnAll) {
    const Evaluation evaluation = evaluateTwo();
    ASSERT_EQ(evaluation.rules.size(), 2U);
    EXPECT_EQ(evaluation.rules[0].rule, "strongest-raw");
    EXPECT_EQ(evaluation.rules[0].each[0].rightOfAll(), 1);
    EXPECT_EQ(evaluation.rules[0].each[1].rightOfAll(), 0);
    EXPECT_EQ(evaluation.rules[0].total.rightOfAll(), 0.5);
    EXPECT_EQ(evaluation.rules[0].total.samples, 40U);
}

TEST(Evaluation, ASweepOfTwoSettingsIsAGridWhoseSecondChangesFastest) {
    const Evaluation evaluation = evaluateTwo({sweepOf("dwell=0..4:2"), sweepOf("patience=1..3:3")});
    ASSERT_EQ(evaluation.points.size(), 6U);
    EXPECT_EQ(evaluation.points[1].values, (std::vector<double>{0, 2}));
    EXPECT_EQ(evaluation.points[3].values, (std::vector<double>{4, 1}));
    // With a dwell time of 4 s the answer comes later.
    EXPECT_GT(evaluation.points[0].total.right, evaluation.points[3].total.right);
}

TEST(Evaluation, SettingsReachTheRuleNearest) {
    NearestSettings settings;
    settings.dwell = 60;
    const Evaluation evaluation = evaluate({recordingOf("one")}, {"nearest"}, settings, {});
    EXPECT_EQ(evaluation.rules[0].total.answered, 0U);
}

TEST(EvaluationText, HasATableForEachRecordingAndOneForAll) {
    const std::string text = textOf(evaluateTwo());
    EXPECT_EQ(text.substr(0, 4), "one\n");
    EXPECT_NE(text.find("\n\ntwo\n"), std::string::npos);
    EXPECT_NE(text.find("\n\nall 2 recordings\n"), std::string::npos);
    EXPECT_NE(
        text.find("  strongest-raw    100.0          100.0       0.00         -       -        0      0      0.2\n"),
        std::string::npos)
        << text;
}

TEST(EvaluationText, OfOneRecordingThereIsNoTableForAll) {
    const std::string text = textOf(evaluate({recordingOf("one")}, {"nearest"}, {}, {}));
    EXPECT_EQ(text.find("all"), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
}

TEST(EvaluationText, OfASweepThereIsALineForEachValue) {
    const std::string text = textOf(evaluateTwo({sweepOf("dwell=0..4:3")}));
    EXPECT_EQ(text.substr(0, 9), "  dwell s");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
}

TEST(EvaluationText, ANameThatCouldSteerATerminalIsMadeHarmless) {
    EXPECT_EQ(textOf(evaluate({recordingOf("\033[2J")}, {"nearest"}, {}, {})).find('\033'), std::string::npos);
}

TEST(EvaluationJSON, HoldsSettingsRulesAndSweep) {
    const auto json = nlohmann::json::parse(JSONOf(evaluateTwo({sweepOf("dwell=0..4:3")})));
    EXPECT_EQ(json["settings"]["decay"], NearestSettings().decay);
    EXPECT_EQ(json["recordings"], (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(json["rules"][0]["total"]["rightPercent"], 50);
    EXPECT_EQ(json["rules"][0]["recordings"][1]["rightPercent"], 0);
    EXPECT_EQ(json["rules"][0]["total"]["medianSecondsToFollow"], nullptr);
    EXPECT_EQ(json["sweep"][2]["settings"]["dwell"], 4);
}

TEST(EvaluationPage, NamesAreWrittenAsText) {
    const std::string page = pageOf(evaluate({recordingOf("</script><img src=x>\"&")}, {"nearest"}, {}, {}));
    EXPECT_EQ(page.find("<img"), std::string::npos);
    EXPECT_NE(page.find("&lt;/script&gt;&lt;img src=x&gt;&quot;&amp;"), std::string::npos);
}

TEST(EvaluationPage, AsksForNothingFromAnywhere) {
    const std::string page = pageOf(evaluateTwo({sweepOf("dwell=0..4:3")}));
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
    EXPECT_EQ(page.find("http:"), std::string::npos);
    EXPECT_EQ(page.find("https:"), std::string::npos);
    EXPECT_EQ(page.find(" src="), std::string::npos);
}

TEST(EvaluationPage, OfAGridEachValueOfTheFirstSettingHasACurve) {
    const std::string page = pageOf(evaluateTwo({sweepOf("dwell=0..4:3"), sweepOf("patience=1..3:2")}));
    std::size_t curves = 0;
    for (auto place = page.find("<polyline"); place != std::string::npos; place = page.find("<polyline", place + 1)) {
        ++curves;
    }
    EXPECT_EQ(curves, 3U);  // in one chart: without a change there are no times to follow one
    EXPECT_NE(page.find("dwell 2, patience 3: "), std::string::npos);
}

TEST(Recordings, ATruthFileHasTheNameOfItsRecording) {
    EXPECT_EQ(truthPathFor("hall/a.jsonl"), "hall/a.truth.jsonl");
    EXPECT_EQ(truthPathFor("a.b.pcapng"), "a.b.truth.jsonl");
    EXPECT_EQ(truthPathFor("a"), "a.truth.jsonl");
}

TEST(Table, ColumnsAreAsWideAsTheyNeedToBe) {
    Table table({"x", "longer"});
    table.add({"Café", "1"});
    EXPECT_EQ(table.text(), "  x     longer\n  Café       1\n");
}

TEST(Chart, WhatIsFarFromWhatItIsAboutIsDropped) {
    const auto series = [](const char* name, bool emphasised, double x, double y) {
        return ChartSeries{name, false, emphasised, {{x, y, name}}, {}};
    };
    Chart chart{"",
                "",
                "",
                {series("main", true, 2, 50), series("edge", false, 5, 35), series("right", false, 5.1, 50),
                 series("below", false, 1, 34.9)}};
    EXPECT_EQ(dropFar(chart), (std::vector<std::string>{"right", "below"}));
    EXPECT_EQ(chart.series.size(), 2U);
}

TEST(Chart, WhereNothingIsEmphasisedEverythingStays) {
    Chart chart{"", "", "", {{"one", false, false, {{900, 0, ""}}, {}}, {"two", false, false, {{0, 90, ""}}, {}}}};
    EXPECT_TRUE(dropFar(chart).empty());
}

TEST(Chart, WithoutAPointThereIsNoPicture) { EXPECT_EQ(SVGOf({"", "", "", {{"one", true, true, {}, {}}}}), ""); }

TEST(Chart, APointAloneCanBeDrawn) {
    const std::string picture = SVGOf({"", "", "", {{"one", false, false, {{0, 50, "tip"}}, {}}}});
    EXPECT_EQ(picture.find("nan"), std::string::npos) << picture;
    EXPECT_NE(picture.find("<title>tip</title>"), std::string::npos);
}

}  // namespace
}  // namespace nearcast::cli
