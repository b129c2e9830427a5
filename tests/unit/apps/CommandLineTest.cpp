// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "doubles/TemporaryFolder.h"

#include <nearcast/Platform.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

struct Ran {
    int status = -1;
    std::string out;
    std::string error;
};

class CommandLine : public testing::Test {
protected:
    static Ran run(std::vector<std::string> words) {
        words.insert(words.begin(), "nearcast");
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Ran ran;
        ran.status = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
        ran.out = testing::internal::GetCapturedStdout();
        ran.error = testing::internal::GetCapturedStderr();
        return ran;
    }
    static void expectRefusal(const Ran& ran, int status, const std::string& error) {
        EXPECT_EQ(ran.status, status);
        EXPECT_EQ(ran.error, error);
    }

    const TemporaryFolder folder_;
};

TEST_F(CommandLine, WithoutACommandIsWrong) { EXPECT_EQ(run({}).status, exitUsage); }

TEST_F(CommandLine, AFileThatIsWrongIsNamedByTheCommandThatReadsIt) {
    const std::string path = folder_.write("file", "{");
    expectRefusal(run({"report", folder_.file("none")}), exitFailed,
                  "nearcast report: " + folder_.file("none") + ": cannot be opened: No such file or directory\n");
    EXPECT_EQ(run({"report", path}).status, exitUsage);
    EXPECT_EQ(run({"scene", path}).status, exitUsage);
    EXPECT_EQ(run({"evaluate", path}).status, exitUsage);
    EXPECT_EQ(run({"run", path}).status, exitUsage);
}

TEST_F(CommandLine, AnArgumentThatTheLibraryRefusesIsWrong) {
    const Ran ran = run({"watch", "--radio", "carrier-pigeon"});
    EXPECT_EQ(ran.status, exitUsage);
    EXPECT_EQ(ran.error.rfind("nearcast watch: radio 'carrier-pigeon': there is no radio", 0), 0U) << ran.error;
    EXPECT_EQ(run({"import", folder_.write("file", ""), "--as", "cows"}).status, exitUsage);
}

TEST_F(CommandLine, WhatCannotBeDoneIsAFailureThatTheCommandNames) {
    const std::string output = folder_.file("no folder/out");
    const Ran ran = run({"import", folder_.write("file", ""), "-o", output});
    expectRefusal(ran, exitFailed, "nearcast import: " + output + ": cannot be made: No such file or directory\n");
}

TEST_F(CommandLine, ThatPrintsSettingsMakesNoManager) {
    const Ran ran = run({"scene", "--settings"});
    EXPECT_EQ(ran.status, exitGood);
    EXPECT_NE(ran.out.find("\"Device Type\": \"Printer\""), std::string::npos) << ran.out;
    EXPECT_NO_THROW(Platform::choose({})) << "a manager that exists would forbid it";
}

}  // namespace
}  // namespace nearcast::cli
