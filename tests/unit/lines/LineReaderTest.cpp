// SPDX-License-Identifier: Apache-2.0
#include "lines/LineReader.h"

#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace nearcast::lines {
namespace {

using namespace std::chrono_literals;

class LineReaderTest : public testing::Test {
protected:
    LineReader reader(const std::string& content) { return LineReader({folder_.write("a.jsonl", content)}); }

    /// The times of all lines, in seconds.
    static std::vector<std::int64_t> timesOf(LineReader reader) {
        std::vector<std::int64_t> times;
        while (const auto line = reader.next()) times.push_back(line->at.count() / 1'000'000);
        return times;
    }
    template <class Problem = InputError>
    static std::string problemOf(LineReader& reader) {
        try {
            while (reader.next()) {
            }
            return "";
        } catch (const Problem& error) {
            return error.what();
        }
    }

    TemporaryFolder folder_;
};

using Times = std::vector<std::int64_t>;

TEST_F(LineReaderTest, ReadsOneLineAfterAnother) {
    EXPECT_EQ(timesOf(reader("{\"at\": 1, \"do\": \"end\"}\n{\"do\": \"end\"}\n{\"at\": 3, \"do\": \"end\"}\n")),
              (Times{1, 1, 3}));
}

TEST_F(LineReaderTest, AnEmptyFileHasNoLines) {
    EXPECT_EQ(timesOf(reader("")), Times{});
    EXPECT_EQ(timesOf(reader("\n\n \t \r\n")), Times{});
}

TEST_F(LineReaderTest, PassesOverBlankLinesAndCountsThem) {
    LineReader lines = reader("\n  \n{\"at\": 1, \"do\": \"end\"}\n\ngarbage\n");
    EXPECT_EQ(lines.next()->at, 1s);
    EXPECT_NE(problemOf(lines).find("a.jsonl: not JSON at line 5, column 1: "), std::string::npos);
}

TEST_F(LineReaderTest, TakesLinesThatEndWithACarriageReturnToo) {
    EXPECT_EQ(timesOf(reader("{\"at\": 1, \"do\": \"end\"}\r\n\r\n{\"at\": 2, \"do\": \"end\"}\r\n")), (Times{1, 2}));
}

TEST_F(LineReaderTest, TakesALastLineWithoutAnEnd) {
    EXPECT_EQ(timesOf(reader("{\"at\": 1, \"do\": \"end\"}\n{\"at\": 2, \"do\": \"end\"}")), (Times{1, 2}));
}

TEST_F(LineReaderTest, ReadsSeveralFilesAsOneScenarioOnOneClock) {
    const std::string first = folder_.write("first", "{\"at\": 7, \"do\": \"end\"}");
    const std::string empty = folder_.write("empty", "");
    const std::string second = folder_.write("second", "{\"do\": \"end\"}\n{\"at\": 8, \"do\": \"end\"}\n");
    EXPECT_EQ(timesOf(LineReader({first, empty, second})), (Times{7, 7, 8}));
    EXPECT_EQ(timesOf(LineReader({})), Times{});
}

TEST_F(LineReaderTest, NamesTheFileAndTheLineInItThatIsWrong) {
    const std::string first = folder_.write("first", "{\"do\": \"end\"}\n");
    const std::string second = folder_.write("second", "{\"do\": \"end\"}\n{\"do\": \"dance\"}\n");
    LineReader lines({first, second});
    EXPECT_EQ(problemOf(lines), second + ":2: unknown \"do\": \"dance\"");
}

TEST_F(LineReaderTest, AFileThatCannotBeOpenedIsNamedBeforeAnythingIsRead) {
    const std::string good = folder_.write("good", "");
    try {
        LineReader({good, folder_.file("missing")});
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.what(), folder_.file("missing") + ": cannot be opened: No such file or directory");
    }
}

TEST_F(LineReaderTest, AFolderCannotBeRead) {
    LineReader lines({folder_.file("")});
    EXPECT_EQ(problemOf<std::system_error>(lines), folder_.file("") + ": cannot be read: Is a directory");
    EXPECT_EQ(lines.next(), std::nullopt) << "nothing follows";
}

TEST_F(LineReaderTest, AWrongLineHappensAtItsOwnTimeWhereThatCanBeRead) {
    LineReader lines = reader("{\"at\": 1, \"do\": \"end\"}\n{\"at\": 5, \"do\": \"dance\"}\n");
    lines.next();
    EXPECT_EQ(lines.peekTime(), 5s);
    EXPECT_THROW(lines.next(), InputError);
    LineReader unreadable = reader("{\"at\": 1, \"do\": \"end\"}\n{\"at\": 5, \n");
    unreadable.next();
    EXPECT_EQ(unreadable.peekTime(), 1s);
    EXPECT_THROW(unreadable.next(), InputError);
}

TEST_F(LineReaderTest, NothingFollowsAWrongLine) {
    LineReader lines = reader("garbage\n{\"at\": 1, \"do\": \"end\"}\n");
    EXPECT_THROW(lines.next(), InputError);
    EXPECT_EQ(lines.next(), std::nullopt);
    EXPECT_EQ(lines.peekTime(), std::nullopt);
}

TEST_F(LineReaderTest, LookingAheadTakesNothingAway) {
    LineReader lines = reader("{\"at\": 1, \"do\": \"end\"}\n{\"at\": 2, \"do\": \"end\"}\n");
    EXPECT_EQ(lines.peekTime(), 1s);
    EXPECT_EQ(lines.peekTime(), 1s);
    EXPECT_EQ(lines.next()->at, 1s);
    EXPECT_EQ(lines.peekTime(), 2s);
    EXPECT_EQ(lines.next()->at, 2s);
    EXPECT_EQ(lines.peekTime(), std::nullopt);
}

/// A good line of so many octets.
std::string lineOf(std::size_t octets) {
    const std::string start = "{\"do\": \"end\"";
    return start + std::string(octets - start.size() - 1, ' ') + "}";
}

TEST_F(LineReaderTest, ALineOf16MiBIsReadAndALongerOneIsNot) {
    EXPECT_EQ(timesOf(reader(lineOf(LineReader::longestLine) + "\n")).size(), 1U);
    EXPECT_EQ(timesOf(reader(lineOf(LineReader::longestLine))).size(), 1U);
    for (const char* end : {"", "\n"}) {
        LineReader lines = reader("{\"do\": \"end\"}\n" + lineOf(LineReader::longestLine + 1) + end);
        EXPECT_NE(problemOf(lines).find("a.jsonl:2: the line is longer than 16 MiB"), std::string::npos);
    }
}

}  // namespace
}  // namespace nearcast::lines
