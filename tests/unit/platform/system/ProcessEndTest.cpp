// SPDX-License-Identifier: Apache-2.0
#include "platform/system/ProcessEnd.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace nearcast {

namespace {

constexpr int called = 42;
constexpr int notCalled = 0;

/// Each ends a process of its own, whose status tells what was called.
class ProcessEndTest : public testing::Test {
protected:
    ProcessEndTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ProcessEndTest, IsToldByExit) {
    const auto end = [] {
        const ProcessEnd atEnd([] { _exit(called); });
        std::exit(notCalled);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(called), "");
}

TEST_F(ProcessEndTest, IsNotToldToWhatIsGone) {
    const auto end = [] {
        std::make_unique<ProcessEnd>([] { _exit(called); }).reset();
        std::exit(notCalled);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(notCalled), "");
}

TEST_F(ProcessEndTest, IsToldToAllInTheOrderInWhichTheyWereMade) {
    const auto end = [] {
        static int count = 0;
        const ProcessEnd first([] { count = 1; });
        const ProcessEnd second([] { _exit(count == 1 ? called : notCalled); });
        std::exit(notCalled);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(called), "");
}

TEST_F(ProcessEndTest, OfAForkedChildIsNotThatOfTheProcess) {
    const auto end = [] {
        const ProcessEnd atEnd([] { _exit(called); });
        const pid_t child = fork();
        if (child == 0) std::exit(notCalled);
        int status = -1;
        waitpid(child, &status, 0);
        _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(notCalled), "");
}

}  // namespace

}  // namespace nearcast
