// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Evaluation.h"
#include "evaluate/EvaluationOutput.h"
#include "evaluate/Figures.h"

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

TEST(EvaluationPageData, HoldsRulesSettingsAndRecordings) {
    const auto json = nlohmann::json::parse(pageDataOf(evaluateTwo(), "nearcast 0"));
    EXPECT_EQ(json["format"], 1);
    EXPECT_EQ(json["program"], "nearcast 0");
    EXPECT_EQ(json["main"], "nearest");
    EXPECT_EQ(json["recordings"], (std::vector<std::string>{"one", "two"}));
    EXPECT_EQ(json["rules"][0]["recordings"][1]["rightPercent"], 0);
    EXPECT_EQ(json["rules"][0]["total"]["medianSecondsToFollow"], nullptr);
    ASSERT_EQ(json["settings"].size(), nearestSettings().size());
    EXPECT_EQ(json["settings"][2], nlohmann::json({{"name", "dwell"}, {"value", 0.5}, {"unit", "s"}}));
    EXPECT_TRUE(json["sweeps"].empty() && json["points"].empty());
}

TEST(EvaluationPageData, OfAGridHoldsThePointsInTheirOrder) {
    const auto json = nlohmann::json::parse(
        pageDataOf(evaluateTwo({sweepOf("dwell=0..4:3"), sweepOf("patience=1..3:2")}), "nearcast 0"));
    EXPECT_EQ(json["sweeps"][1], nlohmann::json({{"name", "patience"}, {"unit", "dB s"}}));
    ASSERT_EQ(json["points"].size(), 6U);
    EXPECT_EQ(json["points"][3]["values"], (std::vector<double>{2, 3}));
    EXPECT_EQ(json["points"][3]["total"]["minutes"], json["rules"][0]["total"]["minutes"]);
}

TEST(EvaluationPageData, ANameThatIsNotUTF8GetsTheReplacementCharacter) {
    const auto json = nlohmann::json::parse(pageDataOf(evaluate({recordingOf("a\xFF")}, {}, {}, {}), ""));
    EXPECT_EQ(json["recordings"][0], "a\xEF\xBF\xBD");
}

TEST(Recordings, ATruthFileHasTheNameOfItsRecording) {
    EXPECT_EQ(truthPathFor("hall/a.jsonl"), "hall/a.truth.jsonl");
    EXPECT_EQ(truthPathFor("a.b.pcapng"), "a.b.truth.jsonl");
    EXPECT_EQ(truthPathFor("a"), "a.truth.jsonl");
    EXPECT_EQ(truthPathFor("hall/a.jsonl.gz"), "hall/a.truth.jsonl");
    EXPECT_EQ(truthPathFor("a.pcapng.GZ"), "a.truth.jsonl");
    EXPECT_EQ(truthPathFor("a.az"), "a.truth.jsonl");
}

TEST(Table, ColumnsAreAsWideAsTheyNeedToBe) {
    Table table({"x", "longer"});
    table.add({"Café", "1"});
    EXPECT_EQ(table.text(), "  x     longer\n  Café       1\n");
}

}  // namespace
}  // namespace nearcast::cli
