// SPDX-License-Identifier: Apache-2.0
#include "unit/support/LogWriterFixture.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace nearcast {

namespace {

using Texts = std::vector<std::string>;

class LogWriterDirect : public LogWriterTest {
protected:
    void start(LogWriter::Sink sink, std::size_t capacity = 8) { writer.start({std::move(sink), 0, capacity, true}); }
};

TEST_F(LogWriterDirect, CallsTheSinkAtOnceOnTheCallersThread) {
    std::thread::id thread;
    start([&](const LogRecord& record) {
        thread = std::this_thread::get_id();
        seen.add(record);
    });
    say("now");
    EXPECT_EQ(seen.texts(), Texts{"now"});
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(LogWriterDirect, WritesWhatTheSinkCausesOnceTheSinkHasReturned) {
    int depth = 0;
    start([&](const LogRecord& record) {
        EXPECT_EQ(++depth, 1);
        if (record.anyString == "first") {
            say("caused");
            say("caused too");
        }
        seen.add(record);
        --depth;
    });
    say("first");
    say("second");
    EXPECT_EQ(seen.texts(), (Texts{"first", "caused", "caused too", "second"}));
}

TEST_F(LogWriterDirect, EndsASinkThatAlwaysCausesARecordAtTheCapacity) {
    start(
        [&](const LogRecord& record) {
            seen.add(record);
            say("echo");
        },
        2);
    say("first");
    EXPECT_EQ(seen.texts(), (Texts{"first", "echo", "echo", "1 records were dropped"}));
    EXPECT_EQ(writer.dropped(), 2u);  // the last echo, and that of the telling
    say("second");
    EXPECT_EQ(seen.texts().size(), 8u);
    EXPECT_EQ(seen.texts().back(), "2 records were dropped");
}

TEST_F(LogWriterDirect, CallsTheSinkOneAtATime) {
    constexpr int threads = 4;
    constexpr int each = 200;
    std::atomic<int> inside{0};
    int calls = 0;  // by the promise under test
    start([&](const LogRecord&) {
        EXPECT_EQ(inside.fetch_add(1), 0);
        ++calls;
        inside.fetch_sub(1);
    });
    std::vector<std::thread> crowd;
    for (int thread = 0; thread < threads; ++thread) {
        crowd.emplace_back([this] {
            for (int number = 0; number < each; ++number) say("x");
        });
    }
    for (std::thread& thread : crowd) thread.join();
    writer.stop();
    EXPECT_EQ(calls, threads * each);
}

TEST_F(LogWriterDirect, StopWaitsForASinkThatIsBeingCalled) {
    std::atomic<bool> done{false};
    start([&](const LogRecord&) {
        held.wait();
        done = true;
    });
    std::thread caller([this] { say("slow"); });
    held.awaitSomebody();
    std::thread opener([this] { held.open(); });
    writer.stop();
    EXPECT_TRUE(done);
    caller.join();
    opener.join();
}

TEST_F(LogWriterDirect, ReportsWhatTheSinkThrowsAndTellsTheCallerNothing) {
    start([](const LogRecord&) { throw std::runtime_error("no"); });
    testing::internal::CaptureStderr();
    EXPECT_NO_THROW(say("x"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "nearcast: a trace record could not be written: no\n");
}

TEST_F(LogWriterDirect, LetsNoEscapeThroughInWhatTheSinkThrows) {
    start([](const LogRecord&) { throw std::runtime_error("\x1B[2Jno"); });
    testing::internal::CaptureStderr();
    say("x");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "nearcast: a trace record could not be written: \xEF\xBF\xBD[2Jno\n");
}

TEST_F(LogWriterDirect, RefusesToBeStoppedByItsSink) {
    bool refused = false;
    start([&](const LogRecord&) {
        EXPECT_THROW(writer.stop(), std::logic_error);
        writer.flush();
        refused = true;
    });
    say("x");
    writer.flush();
    EXPECT_TRUE(refused);
}

}  // namespace

}  // namespace nearcast
