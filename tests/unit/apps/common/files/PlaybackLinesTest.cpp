// SPDX-License-Identifier: Apache-2.0
#include "common/files/PlaybackLines.h"

#include "doubles/TemporaryFolder.h"
#include "unit/platform/files/GzipBytes.h"
#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

using lines::Time;
using replay::btsnoopHeader;
using replay::btsnoopRecord;
using Times = std::vector<std::int64_t>;

const std::string first = R"({"at": 1, "do": "end"})";
const std::string untimed = R"({"do": "end"})";

std::string textOf(const Octets& octets) { return {octets.begin(), octets.end()}; }

/// Two reports, half a second apart.
std::string capture() {
    const Octets packet = replay::H4(legacyEvent({{}}));
    return textOf(btsnoopHeader(1002) + btsnoopRecord(0, packet) + btsnoopRecord(500'000, packet));
}

struct PlaybackLinesTest : testing::Test {
    TemporaryFolder folder;
    int files = 0;

    std::string write(const std::string& content) { return folder.write("file" + std::to_string(++files), content); }
    static Times timesOf(lines::LineSource& source) {
        Times times;
        while (source.peekTime()) {
            if (const auto line = source.next()) times.push_back(line->at.count());
        }
        return times;
    }
    Times timesOf(const std::vector<std::string>& contents) {
        std::vector<std::string> paths;
        for (const std::string& content : contents) paths.push_back(write(content));
        PlaybackLines lines(paths);
        return timesOf(lines);
    }
};

TEST_F(PlaybackLinesTest, FilesOfAllKindsAreOneScenarioOnOneClock) {
    EXPECT_EQ(timesOf({first + "\n", capture(), gzipped(untimed), "", gzipped(capture())}),
              (Times{1'000'000, 0, 500'000, 500'000, 0, 500'000}));
}

TEST_F(PlaybackLinesTest, AreOpenedBeforeAnyIsRead) {
    try {
        PlaybackLines({write(first), folder.file("missing")});
        FAIL() << "it was opened";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.what(), folder.file("missing") + ": cannot be opened: No such file or directory");
    }
}

TEST_F(PlaybackLinesTest, AFolderCannotBeRead) {
    PlaybackLines lines({folder.file("")});
    EXPECT_EQ(lines.peekTime(), Time(0));
    EXPECT_THROW(lines.next(), std::system_error);
}

TEST_F(PlaybackLinesTest, AWrongLineIsNamedByItsFileAndNumberAndNothingFollows) {
    const std::string wrong = write("\n{\"at\": 2, \"do\": \"dance\"}\n" + first);
    PlaybackLines lines({write(first), wrong, write(first)});
    EXPECT_EQ(lines.next()->at, Time(1'000'000));
    EXPECT_EQ(lines.peekTime(), Time(2'000'000));
    try {
        lines.next();
        FAIL() << "it was read";
    } catch (const lines::InputError& error) {
        EXPECT_EQ(error.what(), wrong + ":2: unknown \"do\": \"dance\"");
    }
    EXPECT_EQ(lines.errorAsDamage(), wrong + ": damaged at byte 1: line 2: unknown \"do\": \"dance\"");
    EXPECT_FALSE(lines.cut());
    EXPECT_EQ(lines.next(), std::nullopt);
    EXPECT_EQ(lines.peekTime(), std::nullopt);
}

TEST_F(PlaybackLinesTest, ALastLineThatIsNoWholeOneWasCut) {
    PlaybackLines lines({write(first + "\n{\"at\": 2, \"do")});
    lines.next();
    EXPECT_THROW(lines.next(), lines::InputError);
    EXPECT_TRUE(lines.cut());
    PlaybackLines whole({write(first + "\n{\"at\": 2, \"do\": \"dance\"}")});
    whole.next();
    EXPECT_THROW(whole.next(), lines::InputError);
    EXPECT_FALSE(whole.cut()) << "it is whole, though wrong";
}

TEST_F(PlaybackLinesTest, AFileThatIsNoRecordingIsAnErrorOfItsOwn) {
    const std::string path = write("PNG");
    PlaybackLines lines({write(first), path});
    EXPECT_TRUE(lines.next());
    EXPECT_EQ(lines.peekTime(), Time(1'000'000));
    EXPECT_THROW(lines.next(), replay::NoRecording);
    EXPECT_EQ(lines.errorAsDamage(), "");
    EXPECT_FALSE(lines.next());
}

TEST_F(PlaybackLinesTest, DamageOfACaptureEndsThem) {
    const std::string path = write(capture() + "cut");
    PlaybackLines lines({path, write(first)});
    EXPECT_EQ(timesOf(lines), (Times{0, 500'000}));
    EXPECT_EQ(lines.damage(), path + ": damaged at byte " + std::to_string(capture().size()) +
                                  ": the file ends inside what begins here");
}

TEST_F(PlaybackLinesTest, DamageOfPackedLinesEndsThem) {
    const std::string whole = first + "\n" + first + "\n";
    for (const bool inside : {false, true}) {
        // A sender that was killed has written whole lines; what broke off elsewhere ends anywhere.
        std::string packed = gzipped(whole + (inside ? "{\"at\": 3, \"d" : ""));
        packed.resize(packed.size() - 4);
        const std::string path = write(packed);
        PlaybackLines lines({path, write(first)});
        EXPECT_EQ(timesOf(lines), (Times{1'000'000, 1'000'000})) << inside;
        EXPECT_EQ(lines.damage(),
                  path + ": damaged at byte " + std::to_string(whole.size()) + ": the gzip data end before their end");
    }
}

}  // namespace
}  // namespace nearcast::cli
