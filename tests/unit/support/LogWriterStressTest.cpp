// SPDX-License-Identifier: Apache-2.0
#include "unit/support/LogWriterFixture.h"

#include <array>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <thread>

namespace nearcast {

namespace {

constexpr std::size_t threads = 3;
constexpr std::uint32_t mostAhead = 1000;

/// Threads that log numbers, each its own from 0 on, until they are told to end.
class Crowd {
public:
    /// @param written none, or what is counted up when one is written: they get no farther ahead than about `mostAhead`
    explicit Crowd(LogWriter& writer, const std::atomic<std::uint32_t>* written = nullptr) : written_(written) {
        for (std::size_t name = 0; name < threads; ++name) {
            threads_[name] = std::thread([this, &writer, name] { talk(writer, name); });
        }
    }
    ~Crowd() {
        ending_ = true;
        for (std::thread& thread : threads_) thread.join();
    }

    /// Returns when every thread has said `count` more.
    void awaitMore(std::uint32_t count) {
        for (auto& said : said_) {
            const std::uint32_t before = said;
            for (std::uint32_t now = before; now - before < count; now = said) said.wait(now);
        }
    }
    /// How many numbers a thread has handed over at the least.
    std::uint32_t said(std::size_t name) const { return said_[name]; }

private:
    void talk(LogWriter& writer, std::size_t name) {
        while (!ending_) {
            const std::uint32_t number = said_[name];
            if (written_ != nullptr && total_ >= *written_ + mostAhead) {
                std::this_thread::yield();
                continue;
            }
            writer.outputLogAsyncWithLogType(QXLogTypeProcess, 0, nullptr, "", static_cast<std::uint32_t>(name), "m",
                                             std::to_string(number));
            ++total_;
            said_[name] = number + 1;
            said_[name].notify_all();
        }
    }

    const std::atomic<std::uint32_t>* written_;
    std::atomic<std::uint32_t> total_{0};
    std::atomic<bool> ending_{false};
    std::array<std::atomic<std::uint32_t>, threads> said_{};
    std::array<std::thread, threads> threads_;
};

/// What came of each thread's numbers.
struct Heard {
    std::array<std::uint32_t, threads> first{};
    std::array<std::uint32_t, threads> next{};
    std::array<bool, threads> any{};
    std::uint64_t missing = 0;  ///< numbers left out between two of a thread
    std::uint64_t told = 0;     ///< records that were told to be dropped

    void hear(const LogRecord& record) {
        std::uint32_t number = 0;
        std::from_chars(record.anyString.data(), record.anyString.data() + record.anyString.size(), number);
        if (record.logType == QXLogTypeError) {
            told += number;
            return;
        }
        const std::size_t name = record.lineNumber;
        if (!any[name]) first[name] = next[name] = number;
        any[name] = true;
        EXPECT_GE(number, next[name]) << "thread " << name;
        missing += number - next[name];
        next[name] = number + 1;
    }
};

TEST_F(LogWriterTest, StopLosesNothingThatWasTakenWhileOthersGoOnLogging) {
    for (int round = 0; round < 10; ++round) {
        Heard heard;
        std::atomic<std::uint32_t> written{0};
        const auto sink = [&](const LogRecord& record) {
            heard.hear(record);
            ++written;
        };
        writer.start({sink, 0, 1 << 13});
        Crowd crowd(writer, &written);
        crowd.awaitMore(20);
        std::array<std::uint32_t, threads> before{};
        for (std::size_t name = 0; name < threads; ++name) before[name] = crowd.said(name);
        writer.stop();
        ASSERT_EQ(writer.dropped(), 0u);
        EXPECT_EQ(heard.missing, 0u);
        for (std::size_t name = 0; name < threads; ++name) {
            EXPECT_EQ(heard.first[name], 0u);
            EXPECT_GE(heard.next[name], before[name]) << "thread " << name;
        }
    }
}

TEST_F(LogWriterTest, MissesNoMoreThanItSaysItDropped) {
    Heard heard;
    writer.start({[&heard](const LogRecord& record) { heard.hear(record); }, 0, 4});
    {
        Crowd crowd(writer);
        crowd.awaitMore(2000);
    }
    writer.stop();
    EXPECT_EQ(heard.told, writer.dropped());
    EXPECT_LE(heard.missing, heard.told);
}

TEST_F(LogWriterTest, CanBeStartedStoppedAndFlushedWhileOthersLog) {
    std::atomic<std::uint64_t> calls{0};
    Crowd crowd(writer);
    for (int round = 0; round < 20; ++round) {
        writer.start({[&calls](const LogRecord&) { ++calls; }, 0, 16, round % 3 == 0});
        const std::uint64_t before = calls;
        for (std::uint64_t now = before; now == before; now = calls) std::this_thread::yield();
        if (round % 2 == 0) writer.flush();
        if (round % 5 == 0) writer.stop();
    }
    writer.stop();
    const std::uint64_t last = calls;
    crowd.awaitMore(100);
    EXPECT_EQ(calls, last);  // nothing comes after stop
}

TEST_F(LogWriterTest, FlushWaitsForWhatAllThreadsHandedOver) {
    std::atomic<std::uint32_t> written{0};
    writer.start({[&written](const LogRecord&) { ++written; }, 0, 1 << 16});
    std::vector<std::thread> crowd;
    for (std::uint32_t name = 0; name < threads; ++name) {
        crowd.emplace_back([&] {
            for (std::uint32_t number = 1; number <= 50; ++number) {
                say("x");
                writer.flush();
                EXPECT_GE(written, number);
            }
        });
    }
    for (std::thread& thread : crowd) thread.join();
    EXPECT_EQ(written, 50 * threads);
}

void exitWhileOthersLog(const std::string& path) {
    auto& writer = LogWriter::sharedInstance();
    writer.start({LogWriter::fileSink(path)});
    for (int number = 0; number < 1000; ++number) {
        writer.outputLogAsyncWithLogType(QXLogTypeProcess, 0, nullptr, "main", 1, "m", "said before the exit");
    }
    for (int thread = 0; thread < 2; ++thread) {
        std::thread([&writer] {
            while (true) writer.outputLogAsyncWithLogType(QXLogTypeProcess, 0, nullptr, "other", 1, "m", "goes on");
        }).detach();
    }
    std::exit(3);
}

TEST_F(LogWriterTest, IsWrittenOutWhenTheProcessExitsWhileThreadsLog) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr const char* variable = "NEARCAST_TEST_EXIT_LOG";  // the process that exits is another than this
    const TemporaryFile file;
    ::setenv(variable, file.path().c_str(), 0);
    EXPECT_EXIT(exitWhileOthersLog(std::getenv(variable)), testing::ExitedWithCode(3), "");
    const std::string text = file.text();
    std::size_t lines = 0;
    for (std::size_t at = text.find("said before"); at != std::string::npos; at = text.find("said before", at + 1))
        ++lines;
    EXPECT_EQ(lines, 1000u);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n');
}

}  // namespace

}  // namespace nearcast
