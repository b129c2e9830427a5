// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"

#include <nearcast/LogWriter.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {

/// Records as a sink saw them, for any thread.
class SeenRecords {
public:
    struct Record {
        QXLogType logType;
        std::int32_t logLevel;
        const void* objectAddress;
        std::string fileName;
        std::uint32_t lineNumber;
        std::string methodName;
        std::string anyString;
    };

    void add(const LogRecord& record) {
        const MutexLock lock(mutex_);
        records_.push_back({record.logType, record.logLevel, record.objectAddress, std::string(record.fileName),
                            record.lineNumber, std::string(record.methodName), std::string(record.anyString)});
    }
    [[nodiscard]] std::vector<Record> all() const {
        const MutexLock lock(mutex_);
        return records_;
    }
    [[nodiscard]] std::vector<std::string> texts() const {
        std::vector<std::string> result;
        for (const Record& record : all()) result.push_back(record.anyString);
        return result;
    }

private:
    mutable Mutex mutex_;
    std::vector<Record> records_ NEARCAST_GUARDED_BY(mutex_);
};

/// Holds whoever comes until it is opened.
class Barrier {
public:
    void wait() {
        MutexLock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        while (!open_) changed_.wait(lock.native());
    }
    void open() {
        const MutexLock lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    /// Returns when somebody has come.
    void awaitSomebody() {
        MutexLock lock(mutex_);
        while (waiting_ == 0) changed_.wait(lock.native());
    }

private:
    Mutex mutex_;
    std::condition_variable changed_;
    bool open_ NEARCAST_GUARDED_BY(mutex_) = false;
    int waiting_ NEARCAST_GUARDED_BY(mutex_) = 0;
};

/// Leaves the writer off.
class LogWriterTest : public testing::Test {
protected:
    void TearDown() override { writer.stop(); }

    LogWriter::Sink seeing() {
        return [this](const LogRecord& record) { seen.add(record); };
    }
    /// Starts the writer with a sink that holds the worker at the first record, and waits until it is held.
    void startHeld(std::size_t capacity) {
        writer.start({[this](const LogRecord& record) {
                          seen.add(record);
                          held.wait();
                      },
                      0, capacity});
        say("held");
        held.awaitSomebody();
    }
    void say(std::string_view text) {
        writer.outputLogAsyncWithLogType(QXLogTypeProcess, 0, this, "file", 1, "method", text);
    }

    LogWriter& writer = LogWriter::sharedInstance();
    SeenRecords seen;
    Barrier held;
};

/// A path for this test and process alone, where nothing is yet; what is there at the end is removed.
class TemporaryFile {
public:
    TemporaryFile() {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "." + test->name() + "." + std::to_string(::getpid());
        std::replace(name.begin(), name.end(), '/', '.');
        path_ = testing::TempDir() + name;
        std::remove(path_.c_str());
    }
    ~TemporaryFile() { std::remove(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string text() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

}  // namespace nearcast
