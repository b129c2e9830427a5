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

TEST_F(CommandLine, WithoutACommandIsWrong) {
    const Ran ran = run({});
    EXPECT_EQ(ran.status, exitUsage);
    EXPECT_EQ(ran.error.rfind("nearcast: a command is needed: watch, ", 0), 0U) << ran.error;
    EXPECT_TRUE(ran.error.ends_with("\nTry 'nearcast --help'.\n")) << ran.error;
    char* none = nullptr;
    testing::internal::CaptureStderr();
    EXPECT_EQ(runCommandLine(0, &none), exitUsage) << "not even a name";
    testing::internal::GetCapturedStderr();
}

TEST_F(CommandLine, ACommandThatIsNoneGetsTheOneThatWasMeant) {
    const auto meant = [](const std::string& word) { return run({word}).error; };
    const std::string pointer = "?\nTry 'nearcast --help'.\n";
    EXPECT_EQ(meant("wach"), "nearcast: there is no command 'wach'; did you mean 'watch'" + pointer);
    EXPECT_EQ(meant("eval"), "nearcast: there is no command 'eval'; did you mean 'evaluate'" + pointer);
    EXPECT_EQ(meant("scan"), "nearcast: there is no command 'scan'; did you mean 'watch'" + pointer);
    EXPECT_EQ(meant("simulator"),
              "nearcast: there is no command 'simulator'; did you mean 'nearcast watch --radio "
              "simulator'" +
                  pointer);
    EXPECT_EQ(meant("frobnicate").find("did you mean"), std::string::npos);
}

TEST_F(CommandLine, HelpAndVersionAreWordsToo) {
    EXPECT_EQ(run({"help"}).out, run({"--help"}).out);
    EXPECT_EQ(run({"help", "scene"}).out, run({"scene", "--help"}).out);
    EXPECT_EQ(run({"version"}).out, run({"--version"}).out);
    EXPECT_EQ(run({"-V"}).out, run({"--version"}).out);
    EXPECT_EQ(run({"help", "scene", "run"}).status, exitUsage);
    EXPECT_EQ(run({"version", "scene"}).status, exitUsage);
    EXPECT_EQ(run({"help", "none"}).status, exitUsage);
}

TEST_F(CommandLine, AValueThatIsEmptyIsWrongUse) {
    const std::string pointer = "\nTry 'nearcast scene --help'.\n";
    expectRefusal(run({"scene", ""}), exitUsage, "nearcast scene: FILE: is empty" + pointer);
    expectRefusal(run({"scene", "--truth", "--for="}), exitUsage, "nearcast scene: --for: is empty" + pointer);
    EXPECT_EQ(run({"scene", "--for=", "--truth"}).status, exitUsage) << "the next word is not its value";
}

TEST_F(CommandLine, AnOptionOfOneLetterMayHaveItsValueBehindAnEqualsSign) {
    const std::string recording = folder_.write("walk.jsonl", R"({"do": "end"})");
    EXPECT_EQ(run({"import", recording, "-o=" + folder_.file("out")}).status, exitGood);
    EXPECT_NE(folder_.read("out"), "");
    EXPECT_EQ(run({"import", recording, "-o="}).status, exitUsage);
    EXPECT_EQ(run({"scene", "--", "--none="}).error,
              "nearcast scene: --none=: cannot be opened: No such file or directory\n")
        << "behind -- stand no options";
}

TEST_F(CommandLine, AnOptionThatIsNoneGetsTheOneThatWasMeant) {
    const std::string pointer = "\nTry 'nearcast scene --help'.\n";
    expectRefusal(run({"scene", "--truht"}), exitUsage,
                  "nearcast scene: there is no option '--truht'; did you mean '--truth'?" + pointer);
    expectRefusal(run({"scene", "--locks"}), exitUsage,
                  "nearcast scene: there is no option '--locks'; run has it" + pointer);
    expectRefusal(run({"scene", "--truth", "--settings"}), exitUsage,
                  "nearcast scene: --settings and --truth exclude each other" + pointer);
    expectRefusal(run({"scene", "--for", "5"}), exitUsage, "nearcast scene: --for needs --truth" + pointer);
    expectRefusal(run({"scene", "--for"}), exitUsage, "nearcast scene: --for needs a value: SECONDS" + pointer);
    expectRefusal(run({"scene", "--truth", "--for", "5", "--for", "6"}), exitUsage,
                  "nearcast scene: --for is given 2 times" + pointer);
    expectRefusal(run({"scene", "a", "b"}), exitUsage,
                  "nearcast scene: 'b' is not expected: scene takes one FILE" + pointer);
}

TEST_F(CommandLine, ARadioGetsTheOneThatWasMeant) {
    const std::string recording = folder_.write("walk.jsonl", "{}");
    const auto said = [](const std::string& radio) { return run({"watch", "--radio", radio}).error; };
    EXPECT_NE(said("simulater?seed=1").find("; did you mean 'simulator?seed=1'?\n"), std::string::npos);
    EXPECT_NE(said(recording).find("; did you mean 'replay:" + recording + "'?\n"), std::string::npos);
    EXPECT_NE(said("hci0").find("; did you mean 'bluez:hci0'?\n"), std::string::npos);
    EXPECT_NE(said("00:1a:7d:da:71:13").find("; did you mean 'bluez:00:1a:7d:da:71:13'?\n"), std::string::npos);
    EXPECT_EQ(said("simulator?seed=x").find("did you mean"), std::string::npos);
    EXPECT_EQ(said("pigeon").find("did you mean"), std::string::npos);
}

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

TEST_F(CommandLine, AFileThatCannotBeReadIsAFailureWhoeverReadsIt) {
    const std::string folder = folder_.file("");
    expectRefusal(run({"run", folder}), exitFailed, "nearcast run: " + folder + ": cannot be read: Is a directory\n");
    EXPECT_EQ(run({"scene", folder}).status, exitFailed);
    EXPECT_EQ(run({"report", folder}).status, exitFailed);
    EXPECT_EQ(run({"watch", "--radio", "simulator:" + folder}).status, exitFailed);
}

TEST_F(CommandLine, ASceneThatIsWrongIsSoForEveryCommand) {
    const std::string path = folder_.write("scene.json", "{}");
    for (const char* command : {"watch", "record", "doctor"}) {
        const Ran ran = run({command, "--radio", "simulator:" + path});
        EXPECT_EQ(ran.status, exitUsage) << command;
        EXPECT_NE(ran.error.find("nearcast " + std::string(command) + ": " + path + ": $.floor: it is missing\n"),
                  std::string::npos)
            << ran.error;
    }
}

TEST_F(CommandLine, AScenarioThatShowsNothingIsToldOf) {
    const Ran silent = run({"run", folder_.write("file", "")});
    EXPECT_EQ(silent.status, exitGood);
    EXPECT_EQ(silent.error.rfind("nearcast run: nothing was shown: ", 0), 0U) << silent.error;
}

TEST_F(CommandLine, AScenarioThatShowsSomethingIsNot) {
    const Ran shown = run({"run", folder_.write("file", R"({"do": "getRSSI"})")});
    EXPECT_EQ(shown.status, exitGood);
    EXPECT_EQ(shown.error, "");
    EXPECT_NE(shown.out, "");
}

TEST_F(CommandLine, ThatPrintsSettingsMakesNoManager) {
    const Ran ran = run({"scene", "--settings"});
    EXPECT_EQ(ran.status, exitGood);
    EXPECT_NE(ran.out.find("\"Device Type\": \"Printer\""), std::string::npos) << ran.out;
    EXPECT_NO_THROW(Platform::choose({})) << "a manager that exists would forbid it";
}

}  // namespace
}  // namespace nearcast::cli
