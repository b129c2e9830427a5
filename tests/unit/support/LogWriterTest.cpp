// SPDX-License-Identifier: Apache-2.0
#include "unit/support/LogWriterFixture.h"

#include <atomic>
#include <limits>
#include <stdexcept>
#include <thread>

namespace nearcast {

namespace {

using Texts = std::vector<std::string>;

TEST_F(LogWriterTest, IsOffUntilItIsStarted) {
    EXPECT_FALSE(LogWriter::isLogging());
    say("nobody hears this");
    writer.flush();
    writer.start({seeing()});
    EXPECT_TRUE(LogWriter::isLogging());
    writer.stop();
    EXPECT_FALSE(LogWriter::isLogging());
    say("nor this");
    EXPECT_EQ(seen.texts(), Texts{});
}

TEST_F(LogWriterTest, WantsRecordsUpToTheMaximumLevel) {
    writer.start({seeing(), 2});
    EXPECT_TRUE(LogWriter::isTargetLogLevel(-1));
    EXPECT_TRUE(LogWriter::isTargetLogLevel(2));
    EXPECT_FALSE(LogWriter::isTargetLogLevel(3));
}

TEST_F(LogWriterTest, HandsEveryFieldToTheSink) {
    writer.start({seeing()});
    writer.outputLogAsyncWithLogType(QXLogTypeError, 3, &writer, "src/File.cpp", 42, "-[Class method:]", "text");
    writer.flush();
    const auto records = seen.all();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].logType, QXLogTypeError);
    EXPECT_EQ(records[0].logLevel, 3);
    EXPECT_EQ(records[0].objectAddress, &writer);
    EXPECT_EQ(records[0].fileName, "src/File.cpp");
    EXPECT_EQ(records[0].lineNumber, 42u);
    EXPECT_EQ(records[0].methodName, "-[Class method:]");
    EXPECT_EQ(records[0].anyString, "text");
}

TEST_F(LogWriterTest, CopiesTheTexts) {
    startHeld(4);
    std::string text = "as it was";
    say(text);
    text = "otherwise";
    held.open();
    writer.flush();
    EXPECT_EQ(seen.texts(), (Texts{"held", "as it was"}));
}

TEST_F(LogWriterTest, KeepsTextsApartWhenShortOnesFollowLongOnes) {
    writer.start({seeing(), 0, 2});
    const std::string longText(10000, 'x');
    Texts said;
    for (int round = 0; round < 20; ++round) {
        said.push_back(round % 2 == 0 ? longText : std::to_string(round));
        say(said.back());
        writer.flush();
    }
    EXPECT_EQ(seen.texts(), said);
}

TEST_F(LogWriterTest, WritesTheRecordsOfAThreadInOrder) {
    writer.start({seeing(), 0, 1024});
    Texts said;
    for (int number = 0; number < 1000; ++number) {
        said.push_back(std::to_string(number));
        say(said.back());
    }
    writer.flush();
    EXPECT_EQ(seen.texts(), said);
}

TEST_F(LogWriterTest, RefusesOptionsThatCannotWork) {
    constexpr std::size_t most = std::size_t{1} << 24;
    EXPECT_THROW(writer.start({}), std::invalid_argument);
    EXPECT_THROW(writer.start({seeing(), 0, 0}), std::invalid_argument);
    EXPECT_THROW(writer.start({seeing(), 0, most + 1}), std::invalid_argument);
    EXPECT_THROW(writer.start({seeing(), 0, std::numeric_limits<std::size_t>::max()}), std::invalid_argument);
    EXPECT_FALSE(LogWriter::isLogging());
}

TEST_F(LogWriterTest, GoesOnAfterItRefusedOptions) {
    writer.start({seeing()});
    EXPECT_THROW(writer.start({}), std::invalid_argument);
    say("still heard");
    writer.flush();
    EXPECT_EQ(seen.texts(), Texts{"still heard"});
}

TEST_F(LogWriterTest, StopsTheOldSinkBeforeANewOneStarts) {
    startHeld(4);
    say("old");
    std::thread opener([this] { held.open(); });
    SeenRecords second;
    writer.start({[&second](const LogRecord& record) { second.add(record); }});
    EXPECT_EQ(seen.texts(), (Texts{"held", "old"}));
    say("new");
    writer.stop();
    opener.join();
    EXPECT_EQ(second.texts(), Texts{"new"});
    EXPECT_EQ(seen.texts().size(), 2u);
}

TEST_F(LogWriterTest, ReleasesTheSinkWhenItStops) {
    const auto owned = std::make_shared<int>(1);
    writer.start({[owned](const LogRecord&) {}});
    EXPECT_EQ(owned.use_count(), 2);
    writer.stop();
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(LogWriterTest, WritesAllThatWaitsWhenItStops) {
    startHeld(64);
    for (int number = 0; number < 64; ++number) say(std::to_string(number));
    std::thread opener([this] { held.open(); });
    writer.stop();
    opener.join();
    EXPECT_EQ(seen.texts().size(), 65u);
    EXPECT_EQ(seen.texts().back(), "63");
    EXPECT_EQ(writer.dropped(), 0u);
}

TEST_F(LogWriterTest, CountsWhatAFullQueueDropsAndTellsItInItsPlace) {
    startHeld(4);
    for (const char* text : {"1", "2", "3", "4", "lost", "lost too", "lost as well"}) say(text);
    EXPECT_EQ(writer.dropped(), 3u);
    held.open();
    writer.flush();
    say("after");
    writer.flush();
    EXPECT_EQ(seen.texts(), (Texts{"held", "1", "2", "3", "4", "3 records were dropped", "after"}));
    const auto told = seen.all()[5];
    EXPECT_EQ(told.logType, QXLogTypeError);
    EXPECT_EQ(told.logLevel, 0);
    EXPECT_EQ(told.objectAddress, &writer);
}

TEST_F(LogWriterTest, TellsOnlyWhatWasDroppedSinceItLastTold) {
    startHeld(1);
    for (const char* text : {"1", "lost"}) say(text);
    held.open();
    writer.flush();
    Barrier second;
    writer.start({[&](const LogRecord&) { second.wait(); }, 0, 1});
    EXPECT_EQ(writer.dropped(), 0u);  // counted anew
    say("held");
    second.awaitSomebody();
    for (const char* text : {"1", "lost", "lost too"}) say(text);
    EXPECT_EQ(writer.dropped(), 2u);
    second.open();
    writer.stop();
    EXPECT_EQ(writer.dropped(), 2u);
    EXPECT_EQ(seen.texts(), (Texts{"held", "1", "1 records were dropped"}));
}

TEST_F(LogWriterTest, DropsARecordThatMemoryDoesNotHoldAndTellsIt) {
    constexpr auto huge = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    const std::string_view longerThanMemory("x", huge);  // never read: its length alone is refused
    startHeld(8);
    say("before");
    say(longerThanMemory);
    say("after");
    EXPECT_EQ(writer.dropped(), 1u);
    held.open();
    writer.flush();
    EXPECT_EQ(seen.texts(), (Texts{"held", "before", "after", "1 records were dropped"}));
}

TEST_F(LogWriterTest, TellsARecordThatMemoryDoesNotHoldWhileNothingElseComes) {
    constexpr auto huge = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    writer.start({seeing(), 0, 8});
    say(std::string_view("x", huge));
    writer.flush();
    EXPECT_EQ(seen.texts(), Texts{"1 records were dropped"});
}

struct CapacityCase {
    std::size_t asked;
    int holds;
};

class LogWriterCapacity : public LogWriterTest, public testing::WithParamInterface<CapacityCase> {};

TEST_P(LogWriterCapacity, IsRoundedUpToAPowerOfTwo) {
    startHeld(GetParam().asked);
    for (int number = 0; number < GetParam().holds; ++number) say("waits");
    EXPECT_EQ(writer.dropped(), 0u);
    say("one too many");
    EXPECT_EQ(writer.dropped(), 1u);
    held.open();
}

INSTANTIATE_TEST_SUITE_P(Powers, LogWriterCapacity,
                         testing::Values(CapacityCase{1, 1}, CapacityCase{2, 2}, CapacityCase{3, 4}, CapacityCase{4, 4},
                                         CapacityCase{5, 8}, CapacityCase{4096, 4096}, CapacityCase{4097, 8192}));

TEST_F(LogWriterTest, ReportsWhatASinkThrowsAndGoesOn) {
    writer.start({[this](const LogRecord& record) {
        seen.add(record);
        if (record.anyString == "bad") throw std::runtime_error("the sink is broken");
        if (record.anyString == "worse") throw 1;
    }});
    testing::internal::CaptureStderr();
    for (const char* text : {"bad", "worse", "good"}) say(text);
    writer.flush();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "nearcast: a trace record could not be written: the sink is broken\n"
              "nearcast: a trace record could not be written: an exception of an unknown kind\n");
    EXPECT_EQ(seen.texts(), (Texts{"bad", "worse", "good"}));
}

TEST_F(LogWriterTest, TakesRecordsThatTheSinkCauses) {
    writer.start({[this](const LogRecord& record) {
        seen.add(record);
        if (record.anyString == "first") say("caused");
    }});
    say("first");
    writer.flush();  // all that was handed over before; what the sink causes comes after it
    writer.stop();
    EXPECT_EQ(seen.texts(), (Texts{"first", "caused"}));
}

TEST_F(LogWriterTest, RefusesToBeStartedOrStoppedByItsSink) {
    std::atomic<int> refused{0};
    writer.start({[&](const LogRecord&) {
        EXPECT_THROW(writer.stop(), std::logic_error);
        EXPECT_THROW(writer.start({seeing()}), std::logic_error);
        writer.flush();  // returns at once
        refused = 1;
    }});
    say("go");
    writer.flush();
    EXPECT_EQ(refused, 1);
    EXPECT_TRUE(LogWriter::isLogging());
}

}  // namespace

}  // namespace nearcast
