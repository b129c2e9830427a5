// SPDX-License-Identifier: Apache-2.0
#include "common/UsageError.h"
#include "common/files/PlaybackFile.h"
#include "doubles/TemporaryFolder.h"
#include "platform/replay/RecordingReader.h"
#include "unit/platform/files/GzipBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

namespace nearcast::cli {
namespace {

const std::string advertise =
    R"({"at":1,"do":"advertise","manufacturerData":"FFFF001122AABBCC","RSSI":-60,"services":["180F"]})";

struct PlaybackFileTest : testing::Test {
    TemporaryFolder folder;

    std::string write(const std::string& content) { return folder.write("file", content); }
    template <class Problem>
    std::string problemOf(const std::string& argument) {
        try {
            readPlaybackFile(argument);
        } catch (const Problem& error) {
            return error.what();
        }
        return "";
    }
};

TEST_F(PlaybackFileTest, ReadsTheLinesOfAScenario) {
    const PlaybackFile file = readPlaybackFile(write("\n " + advertise + "\n{\"do\":\"startScan\"}\n"));
    ASSERT_EQ(file.input.lines.size(), 2U);
    EXPECT_TRUE(lab::isScenario(file.input.lines));
    EXPECT_EQ(file.input.lines[1].at, lines::Time(1'000'000));
    EXPECT_EQ(file.damage, "");
}

TEST_F(PlaybackFileTest, AnEmptyFileIsARecordingOfNothing) {
    EXPECT_TRUE(readPlaybackFile(write("")).input.lines.empty());
}

TEST_F(PlaybackFileTest, LetsReportsOfOtherServicesPassWhereAsked) {
    const std::string path = write(advertise);
    const auto services = [](const PlaybackFile& file) {
        return std::get<lines::Advertise>(file.input.lines.at(0).action).services;
    };
    EXPECT_TRUE(services(readPlaybackFile(path)));
    EXPECT_FALSE(services(readPlaybackFile(path + "?services=any")));
}

TEST_F(PlaybackFileTest, NamesTheLineOfAScenarioThatIsWrong) {
    const std::string path =
        write("{\"do\":\"startScan\"}\n" + advertise + "\n{\"do\":\"dance\"}\n" + advertise + "\n");
    EXPECT_EQ(problemOf<lines::InputError>(path), path + R"(:3: unknown "do": "dance")");
}

TEST_F(PlaybackFileTest, NamesAFirstLineThatShowsThatItIsNoRecording) {
    for (const char* end : {"\n", ""}) {
        const std::string path = write(std::string("{\"do\":\"dance\"}") + end);
        EXPECT_EQ(problemOf<lines::InputError>(path), path + R"(:1: unknown "do": "dance")");
    }
    const std::string cut = write("{");
    EXPECT_EQ(problemOf<lines::InputError>(cut), cut + ": not JSON at line 1, column 2: it breaks off here");
}

TEST_F(PlaybackFileTest, ARecordingInLinesThatIsDamagedIsReadUpToThere) {
    const std::string path = write(advertise + "\n{\"do\":\"dance\"}\n" + advertise + "\n");
    const PlaybackFile file = readPlaybackFile(path);
    EXPECT_EQ(file.input.lines.size(), 1U);
    EXPECT_EQ(file.damage, path + ": damaged at byte " + std::to_string(advertise.size() + 1) +
                               R"(: line 2: unknown "do": "dance")");
}

TEST_F(PlaybackFileTest, LinesThatWereCutAreReadUpToThere) {
    const std::string scan = "{\"do\":\"startScan\"}\n";
    for (const std::string& before : {advertise + "\n", scan}) {
        const std::string path = write(before + advertise.substr(0, 20));
        const PlaybackFile file = readPlaybackFile(path);
        EXPECT_EQ(file.input.lines.size(), 1U);
        EXPECT_EQ(file.damage.find(path + ": damaged at byte " + std::to_string(before.size()) +
                                   ": not JSON at line 2, column "),
                  0U)
            << file.damage;
    }
}

TEST_F(PlaybackFileTest, PackedFilesAreReadAsTheOthers) {
    const PlaybackFile file = readPlaybackFile(write(gzipped(advertise + "\n" + advertise + "\n")));
    EXPECT_EQ(file.input.lines.size(), 2U);
    EXPECT_EQ(file.damage, "");
    EXPECT_EQ(file.tally.text(), "2 advertisements, 1.0 s");
}

TEST_F(PlaybackFileTest, OpensAFileWhoseNameHoldsAQuestionMark) {
    const std::string path = folder.write("what?.jsonl", advertise);
    const PlaybackFile file = readPlaybackFile(folder.file("what\\?.jsonl?services=any"));
    EXPECT_EQ(file.path, path);
    EXPECT_EQ(file.input.lines.size(), 1U);
}

TEST_F(PlaybackFileTest, NamesAFileThatIsMissing) {
    EXPECT_EQ(problemOf<std::system_error>("/nowhere/x"), "/nowhere/x: cannot be opened: No such file or directory");
}

TEST_F(PlaybackFileTest, NamesAFileThatIsNoRecording) {
    const std::string path = write("PNG");
    EXPECT_EQ(problemOf<replay::NoRecording>(path),
              path + ": no recording (neither JSON Lines nor btsnoop, pcap or pcapng)");
}

TEST_F(PlaybackFileTest, RefusesOptionsThatMeanNothingHere) {
    const std::string path = write(advertise);
    EXPECT_EQ(problemOf<UsageError>(path + "?speed=8"), path + "?speed=8: speed has no meaning here");
    EXPECT_NE(problemOf<UsageError>(path + "?as=cows").find("option 'as' can be 'dongles' only"), std::string::npos);
}

TEST_F(PlaybackFileTest, ACaptureThatIsCutIsReadUpToThere) {
    const std::string header("btsnoop\0\0\0\0\1\0\0\x07\xD1", 16);
    const PlaybackFile file = readPlaybackFile(write(header + "cut"));
    EXPECT_TRUE(file.input.lines.empty());
    EXPECT_NE(file.damage.find("damaged at byte 16"), std::string::npos) << file.damage;
}

}  // namespace
}  // namespace nearcast::cli
