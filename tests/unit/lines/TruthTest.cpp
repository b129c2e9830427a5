// SPDX-License-Identifier: Apache-2.0
#include "lines/Truth.h"

#include "doubles/TemporaryFolder.h"
#include "lines/TextReader.h"

#include <gtest/gtest.h>

namespace nearcast::lines {
namespace {

struct TruthTest : testing::Test {
    TemporaryFolder folder;

    Truth read(const std::string& content) { return readTruth(folder.write("x.truth.jsonl", content)); }
    std::string problemOf(const std::string& content) {
        try {
            read(content);
        } catch (const InputError& error) {
            const std::string text = error.what();
            const std::string path = folder.file("x.truth.jsonl");
            return text.starts_with(path) ? text.substr(path.size()) : text;
        }
        return "";
    }
};

TEST_F(TruthTest, ReadsWhereTheUserStoodAndSinceWhen) {
    EXPECT_EQ(read("{\"at\": 0, \"truth\": \"A\"}\n\n{\"at\": 1.5, \"truth\": \"B\"}"), (Truth{{0, "A"}, {1.5, "B"}}));
}

TEST_F(TruthTest, NullIsNextToNone) { EXPECT_EQ(read(R"({"at":0,"truth":null})"), (Truth{{0, ""}})); }

TEST_F(TruthTest, PassesOverWhatTellsMore) {
    EXPECT_EQ(read(R"({"at":0,"truth":"A","distance":1.5,"second":"B","secondDistance":2})").size(), 1U);
    EXPECT_EQ(problemOf(R"({"at":0,"truth":"A","distance":"far"})"), ":1: field \"distance\": expected a number");
}

TEST_F(TruthTest, OfTwoLinesWithOneTimeTheLaterCounts) {
    EXPECT_EQ(read("{\"at\":1,\"truth\":\"A\"}\n{\"at\":1,\"truth\":\"B\"}"), (Truth{{1, "B"}}));
}

TEST_F(TruthTest, TimesDoNotFall) {
    EXPECT_EQ(problemOf("{\"at\":1,\"truth\":\"A\"}\n\n{\"at\":0.999,\"truth\":\"B\"}"),
              ":3: field \"at\": earlier than in the line before");
}

TEST_F(TruthTest, SaysWhichFieldIsMissing) {
    EXPECT_EQ(problemOf(R"({"at":1})"), ":1: field \"truth\" is missing");
    EXPECT_EQ(problemOf(R"({"truth":"A"})"), ":1: field \"at\" is missing");
    EXPECT_EQ(problemOf(R"({"at":1,"truth":7})"), ":1: field \"truth\": expected a text");
    EXPECT_EQ(problemOf(R"({"at":1,"truth":"A","more":7})"), ":1: unknown field \"more\"");
}

TEST_F(TruthTest, SaysWhatIsNoLine) {
    EXPECT_EQ(problemOf("{\"at\":1,\"truth\":\"A\"}\n[]"), ":2: not a JSON object");
    EXPECT_EQ(problemOf("\n{"), ": not JSON at line 2, column 2: it breaks off here");
    EXPECT_EQ(problemOf(""), ": has no line");
}

TEST_F(TruthTest, ALineHasSixtyFourKibibytesAtMost) {
    const std::string line = R"({"at":1,"truth":"A"})";
    EXPECT_EQ(read(line + std::string(65536 - line.size(), ' ') + "\n" + line).size(), 1U);
    EXPECT_EQ(problemOf(line + std::string(65537 - line.size(), ' ') + "\n"), ": a line is longer than 64 KiB");
}

TEST_F(TruthTest, AFileThatIsMissingIsNamed) { EXPECT_THROW(readTruth("/nowhere/x"), std::system_error); }

}  // namespace
}  // namespace nearcast::lines
