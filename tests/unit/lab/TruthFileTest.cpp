// SPDX-License-Identifier: Apache-2.0
#include "doubles/TemporaryFolder.h"
#include "lines/LineReader.h"
#include "lab/TruthFile.h"

#include <gtest/gtest.h>

namespace nearcast::lab {
namespace {

struct TruthFile : testing::Test {
    TemporaryFolder folder;

    lab::Truth read(const std::string& content) { return readTruth(folder.write("x.truth.jsonl", content)); }
    std::string problemOf(const std::string& content) {
        try {
            read(content);
        } catch (const lines::ScenarioError& error) {
            const std::string text = error.what();
            const std::string path = folder.file("x.truth.jsonl");
            return text.starts_with(path) ? text.substr(path.size()) : text;
        }
        return "";
    }
};

TEST_F(TruthFile, ReadsWhereTheUserStoodAndSinceWhen) {
    EXPECT_EQ(read("{\"at\": 0, \"truth\": \"A\"}\n\n{\"at\": 1.5, \"truth\": \"B\"}"),
              (lab::Truth{{0, "A"}, {1.5, "B"}}));
}

TEST_F(TruthFile, NullIsNextToNone) { EXPECT_EQ(read(R"({"at":0,"truth":null})"), (lab::Truth{{0, ""}})); }

TEST_F(TruthFile, PassesOverWhatTellsMore) {
    EXPECT_EQ(read(R"({"at":0,"truth":"A","distance":1.5,"second":"B","secondDistance":2})").size(), 1U);
    EXPECT_EQ(problemOf(R"({"at":0,"truth":"A","distance":"far"})"), ":1: field \"distance\": expected a number");
}

TEST_F(TruthFile, OfTwoLinesWithOneTimeTheLaterCounts) {
    EXPECT_EQ(read("{\"at\":1,\"truth\":\"A\"}\n{\"at\":1,\"truth\":\"B\"}"), (lab::Truth{{1, "B"}}));
}

TEST_F(TruthFile, TimesDoNotFall) {
    EXPECT_EQ(problemOf("{\"at\":1,\"truth\":\"A\"}\n\n{\"at\":0.999,\"truth\":\"B\"}"),
              ":3: field \"at\": earlier than in the line before");
}

TEST_F(TruthFile, SaysWhichFieldIsMissing) {
    EXPECT_EQ(problemOf(R"({"at":1})"), ":1: field \"truth\" is missing");
    EXPECT_EQ(problemOf(R"({"truth":"A"})"), ":1: field \"at\" is missing");
    EXPECT_EQ(problemOf(R"({"at":1,"truth":7})"), ":1: field \"truth\": expected a text");
    EXPECT_EQ(problemOf(R"({"at":1,"truth":"A","more":7})"), ":1: unknown field \"more\"");
}

TEST_F(TruthFile, SaysWhatIsNoLine) {
    EXPECT_EQ(problemOf("{\"at\":1,\"truth\":\"A\"}\n[]"), ":2: not a JSON object");
    EXPECT_EQ(problemOf("{").substr(0, 4), ":1: ");
    EXPECT_EQ(problemOf(""), ": has no line");
}

TEST_F(TruthFile, ALineHasSixtyFourKibibytesAtMost) {
    const std::string line = R"({"at":1,"truth":"A"})";
    EXPECT_EQ(read(line + std::string(65536 - line.size(), ' ') + "\n" + line).size(), 1U);
    EXPECT_EQ(problemOf(line + std::string(65537 - line.size(), ' ') + "\n"), ": a line is longer than 64 KiB");
}

TEST_F(TruthFile, AFileThatIsMissingIsNamed) { EXPECT_THROW(readTruth("/nowhere/x"), lines::ScenarioError); }

TEST_F(TruthFile, OnlyRegisteredDonglesCanBeTheTruth) {
    Playback playback;
    playback.name = "shop";
    playback.dongles = {{"A", "BT:Bar", "", {}}, {"B", "", "", {}}};
    EXPECT_NO_THROW(requireKnown({{0, "A"}, {1, ""}}, playback, "x"));
    EXPECT_THROW(requireKnown({{0, "A"}, {1, "B"}}, playback, "x"), lines::ScenarioError);
    EXPECT_THROW(requireKnown({{0, "C"}}, playback, "x"), lines::ScenarioError);
}

TEST_F(TruthFile, ADongleThatIsUnknownIsNamedWithItsLine) {
    Playback playback;
    playback.name = "shop";
    playback.dongles = {{"A", "BT:Bar", "", {}}};
    const auto truth = read("{\"at\":0,\"truth\":\"A\"}\n\n{\"at\":1,\"truth\":\"C\"}");
    try {
        requireKnown(truth, playback, "x");
        FAIL() << "nothing was thrown";
    } catch (const lines::ScenarioError& error) {
        EXPECT_STREQ(error.what(), "x:3: \"C\" is the address of no device in shop");
    }
}

}  // namespace
}  // namespace nearcast::lab
