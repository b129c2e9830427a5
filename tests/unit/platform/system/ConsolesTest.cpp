// SPDX-License-Identifier: Apache-2.0
#include "platform/system/Consoles.h"
#include "support/Holding.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

/// Puts something else in standard error's place for a scope.
class StandardErrorAs {
public:
    explicit StandardErrorAs(int descriptor) : before_(dup(STDERR_FILENO)) { dup2(descriptor, STDERR_FILENO); }
    ~StandardErrorAs() { restore(); }
    StandardErrorAs(const StandardErrorAs&) = delete;
    StandardErrorAs& operator=(const StandardErrorAs&) = delete;
    void restore() {
        if (before_ < 0) return;
        dup2(before_, STDERR_FILENO);
        close(before_);
        before_ = -1;
    }

private:
    int before_;
};

TEST(StandardErrorConsole, WritesALineWithItsEnd) {
    CaptureStderr();
    StandardErrorConsole console;
    console.NSLog("portName or MACAddr is nil.");
    console.NSLog("");
    EXPECT_EQ(GetCapturedStderr(), "portName or MACAddr is nil.\n\n");
}

TEST(StandardErrorConsole, DoesNotMixTheLinesOfThreads) {
    constexpr std::size_t length = 70000;  // more than a pipe takes at once
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    std::string text;
    {
        StandardErrorAs standardError(ends[1]);
        std::vector<std::thread> crowd;
        for (const char letter : {'a', 'b', 'c'}) {
            crowd.emplace_back([letter] {
                for (int line = 0; line < 5; ++line) StandardErrorConsole().NSLog(std::string(length, letter));
            });
        }
        std::vector<char> buffer(1 << 16);
        while (text.size() < 15 * (length + 1)) {
            const auto got = read(ends[0], buffer.data(), buffer.size());
            text.append(buffer.data(), static_cast<std::size_t>(got));
        }
        for (std::thread& thread : crowd) thread.join();
    }
    for (std::size_t line = 0; line < 15; ++line) {
        const std::string one = text.substr(line * (length + 1), length + 1);
        ASSERT_EQ(one, std::string(length, one[0]) + "\n");
    }
    close(ends[0]);
    close(ends[1]);
}

TEST(StandardErrorConsole, LosesALineThatCannotBeWritten) {
    const int full = open("/dev/full", O_WRONLY);
    StandardErrorAs standardError(full);
    StandardErrorConsole().NSLog("lost");
    close(STDERR_FILENO);
    StandardErrorConsole().NSLog("lost too");
    standardError.restore();
    close(full);
}

TEST(CallbackConsole, HandsEachLineToTheFunction) {
    std::vector<std::string> lines;
    CallbackConsole console([&](std::string_view line) { lines.emplace_back(line); });
    console.NSLog("first");
    console.NSLog("second");
    EXPECT_EQ(lines, (std::vector<std::string>{"first", "second"}));
}

TEST(CallbackConsole, WritesALineThatTheFunctionCausesToStandardError) {
    int calls = 0;
    CallbackConsole* self = nullptr;
    CallbackConsole console([&](std::string_view) {
        ++calls;
        self->NSLog("caused");
    });
    self = &console;
    CaptureStderr();
    console.NSLog("first");
    console.NSLog("second");
    EXPECT_EQ(GetCapturedStderr(), "caused\ncaused\n");
    EXPECT_EQ(calls, 2);
}

TEST(CallbackConsole, WritesALineThatTheFunctionThrowsAtToStandardError) {
    CallbackConsole console([](std::string_view line) {
        if (line == "bad") throw std::runtime_error("cannot show it");
        throw 1;
    });
    CaptureStderr();
    console.NSLog("bad");
    console.NSLog("worse");
    EXPECT_EQ(GetCapturedStderr(), "bad\ncannot show it\nworse\n");
}

TEST(CallbackConsole, HandsALineOverOnceItsThreadHoldsNothing) {
    std::vector<std::string> lines;
    CallbackConsole console([&](std::string_view line) { lines.emplace_back(line); });
    {
        const Holding holding;
        console.NSLog("first");
        console.NSLog(std::string("second"));
        EXPECT_EQ(lines, std::vector<std::string>{});
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"first", "second"}));
}

TEST(CallbackConsole, HandsOverALineThatOutlivesIt) {
    std::vector<std::string> lines;
    const Holding outer;
    {
        CallbackConsole console([&](std::string_view line) { lines.emplace_back(line); });
        console.NSLog("late");
    }
    Holding::end();
    EXPECT_EQ(lines, std::vector<std::string>{"late"});
    Holding::begin();
}

TEST(CallbackConsole, IsHeldByTheThreadThatIsInsideTheFunction) {
    bool held = false;
    CallbackConsole console([&](std::string_view) { held = Holding::any(); });
    console.NSLog("line");
    EXPECT_TRUE(held);
    EXPECT_FALSE(Holding::any());
}

TEST(CallbackConsole, CallsTheFunctionOnceAtATime) {
    std::atomic<int> inside{0};
    int calls = 0;  // by the promise under test
    CallbackConsole console([&](std::string_view) {
        EXPECT_EQ(inside.fetch_add(1), 0);
        ++calls;
        inside.fetch_sub(1);
    });
    std::vector<std::thread> crowd;
    for (int thread = 0; thread < 3; ++thread) {
        crowd.emplace_back([&] {
            for (int line = 0; line < 200; ++line) console.NSLog("line");
        });
    }
    for (std::thread& thread : crowd) thread.join();
    EXPECT_EQ(calls, 600);
}

}  // namespace

}  // namespace nearcast
