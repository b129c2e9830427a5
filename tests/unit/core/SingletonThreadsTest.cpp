// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>
#include <nearcast/QXNearcastManager.h>

#include "doubles/KeptLines.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Mutex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

/// The records of each thread.
struct Records {
    Mutex mutex;
    std::map<std::thread::id, Lines> byThread NEARCAST_GUARDED_BY(mutex);
    Lines inOrder NEARCAST_GUARDED_BY(mutex);

    void add(const LogRecord& record) {
        const MutexLock lock(mutex);
        const std::string line = std::to_string(record.logType) + " " + std::string(record.methodName);
        byThread[std::this_thread::get_id()].push_back(line);
        inOrder.push_back(line);
    }
};

void startLogging(Records& records) {
    LogWriter::Options options;
    options.synchronous = true;
    options.sink = [&](const LogRecord& record) { records.add(record); };
    LogWriter::sharedInstance().start(std::move(options));
}

void choosePlatform() {
    static const JSONSerialization JSON;
    static auto* const console = new KeptLines;
    setCurrentPlatform(std::make_unique<VirtualPlatform>(*console, JSON));
}

/// What each of several threads gets that ask at once.
std::vector<QXNearcastManager*> askAtOnce(std::size_t threads) {
    std::vector<QXNearcastManager*> got(threads);
    std::barrier start(static_cast<std::ptrdiff_t>(threads));
    std::vector<std::thread> running;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        running.emplace_back([&, thread] {
            start.arrive_and_wait();
            got[thread] = &QXNearcastManager::sharedManager();
        });
    }
    for (std::thread& thread : running) thread.join();
    return got;
}

TEST(SingletonThreads, ManyThreadsGetOneManagerThatIsFinished) {
    choosePlatform();
    const auto got = askAtOnce(16);
    EXPECT_EQ(std::count(got.begin(), got.end(), got.front()), 16);
    EXPECT_NE(got.front(), nullptr);
    EXPECT_EQ(got.front()->samplingNumber(), 7U);
}

TEST(SingletonThreads, OneThreadTracesTheCreationAndAllOthersTheirCall) {
    choosePlatform();
    Records records;
    startLogging(records);
    askAtOnce(8);
    LogWriter::sharedInstance().stop();
    const Lines creation{
        "0 +[QXNearcastManager sharedManager]",  "6 +[QXNearcastManager sharedManager]",
        "2 +[QXNearcastManager allocWithZone:]", "6 +[QXNearcastManager allocWithZone:]",
        "3 +[QXNearcastManager allocWithZone:]", "2 -[QXNearcastManager init]",
        "6 -[QXNearcastManager init]",           "3 -[QXNearcastManager init]",
        "1 +[QXNearcastManager sharedManager]",
    };
    const MutexLock lock(records.mutex);
    ASSERT_EQ(records.byThread.size(), 8U);
    int creators = 0;
    for (const auto& [thread, lines] : records.byThread) {
        if (lines == creation) {
            ++creators;
        } else {
            EXPECT_EQ(lines, (Lines{creation.front(), creation.back()}));
        }
    }
    EXPECT_EQ(creators, 1);
    const auto finished = std::find(records.inOrder.begin(), records.inOrder.end(), creation[7]);
    EXPECT_EQ(std::count(records.inOrder.begin(), finished, creation.back()), 0) << "nobody gets it unfinished";
}

}  // namespace
}  // namespace nearcast
