// SPDX-License-Identifier: Apache-2.0
#include "common/Progress.h"

#include "common/Output.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace nearcast::cli {
namespace {

using std::chrono::milliseconds;

struct ProgressTest : testing::Test {
    Progress::Time now{0};
    int made = 0;
    Progress progress{[this] { return now; }};

    void show() {
        progress.show([this] { return "step " + std::to_string(++made); });
    }
    /// What standard error got meanwhile.
    template <class Work>
    static std::string written(const Work& work) {
        testing::internal::CaptureStderr();
        work();
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(ProgressTest, IsDrawnAtOnceAndThenFourTimesASecondAtMost) {
    const std::string output = written([this] {
        for (int millisecond = 0; millisecond <= 1000; ++millisecond) {
            now = milliseconds(millisecond);
            show();
        }
    });
    EXPECT_EQ(made, 5) << "at 0, 250, 500, 750 and 1000 ms";
    EXPECT_EQ(output, "\r\x1b[Kstep 1\r\x1b[Kstep 2\r\x1b[Kstep 3\r\x1b[Kstep 4\r\x1b[Kstep 5");
}

TEST_F(ProgressTest, IsWipedAwayAtItsEndOnce) {
    const std::string output = written([this] {
        show();
        progress.clear();
        progress.clear();
    });
    EXPECT_EQ(output, "\r\x1b[Kstep 1\r\x1b[K");
}

TEST_F(ProgressTest, MakesRoomForAMessage) {
    const std::string output = written([this] {
        show();
        complain("record", "something", exitGood);
        progress.clear();
    });
    EXPECT_EQ(output, "\r\x1b[Kstep 1\r\x1b[Knearcast record: something\n");
}

TEST_F(ProgressTest, IsCutToTheTerminalAndSteersNothing) {
    const std::string output = written([this] { progress.show([] { return "\x1b[2J" + std::string(100, 'x'); }); });
    EXPECT_EQ(output, "\r\x1b[K\xEF\xBF\xBD[2J" + std::string(75, 'x')) << "79 columns where the width is not known";
}

TEST(Progress, IsNothingWithoutATerminal) {
    testing::internal::CaptureStderr();
    {
        Progress progress;
        EXPECT_FALSE(progress.shown());
        progress.show([]() -> std::string { throw std::logic_error("nobody asked"); });
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Tally, SaysHowMuchAndHowLong) {
    EXPECT_EQ((Tally{1, milliseconds(9'960)}.text()), "1 advertisement, 10.0 s");
    EXPECT_EQ(Tally().text(), "0 advertisements, 0.0 s");
}

TEST(SayWritten, NamesTheFileOrStandardOutput) {
    testing::internal::CaptureStderr();
    sayWritten("record", "shop.jsonl", "1 advertisement, 10.0 s");
    sayWritten("record", "", "nothing");
    sayWritten("record", "-", "nothing");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "nearcast record: wrote shop.jsonl: 1 advertisement, 10.0 s\n"
              "nearcast record: wrote standard output: nothing\nnearcast record: wrote standard output: nothing\n");
}

}  // namespace
}  // namespace nearcast::cli
