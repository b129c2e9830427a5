// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"

#include <nearcast/LogWriter.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

/// Records that wait, with copies of their texts. Its memory is used again after `clear`, so that a record allocates
/// nothing in the long run.
class RecordBatch {
public:
    /// @return whether there was memory for it; otherwise nothing has changed
    [[nodiscard]] bool add(const LogRecord& record) noexcept;
    [[nodiscard]] std::size_t size() const noexcept { return records_.size(); }
    /// The records, oldest first. Their texts are valid until the batch changes.
    [[nodiscard]] const std::vector<LogRecord>& records() noexcept;
    void clear() noexcept;

private:
    std::vector<LogRecord> records_;  ///< of their texts only the lengths count, until `records` is called
    std::string texts_;               ///< of all records, one after the other
};

/// The way of records to the sink. There are two, made once and never destroyed: threads may call `take` at any time,
/// which does nothing while the output is stopped.
class LogOutput {
public:
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// @throws std::system_error when no thread can be made; it is then stopped
    virtual void start(LogWriter::Sink sink, std::size_t capacity) = 0;
    /// Takes no more records, writes those it has and releases the sink. Not for a sink.
    virtual void stop() = 0;
    /// Returns when all is written that was taken before the call. Not for a sink.
    virtual void flush() = 0;
    virtual void take(const LogRecord& record) noexcept = 0;
    /// Counts and tells a record that could not even be made as one that is dropped.
    virtual void lose() noexcept = 0;

    /// Whether the calling thread is inside a sink's call.
    [[nodiscard]] static bool insideSink() noexcept;
    /// Whether it is inside a synchronous sink's: threads that trace may be waiting for it, whatever they hold.
    [[nodiscard]] static bool insideDirectSink() noexcept;

protected:
    /// @param dropped counts the records that are not written; lives longer
    explicit LogOutput(std::atomic<std::uint64_t>& dropped) : dropped_(dropped) {}
    ~LogOutput() = default;

    /// Calls the sink; what it throws is reported on standard error.
    static void write(const LogWriter::Sink& sink, const LogRecord& record) noexcept;
    /// Tells how many records are missing, if any are.
    static void writeDropped(const LogWriter::Sink& sink, std::uint64_t records) noexcept;
    void countDropped() noexcept { dropped_.fetch_add(1); }

private:
    std::atomic<std::uint64_t>& dropped_;
};

/// Writes on a thread of its own, so that no caller waits for the sink.
class QueuedLogOutput final : public LogOutput {
public:
    explicit QueuedLogOutput(std::atomic<std::uint64_t>& dropped) : LogOutput(dropped) {}

    /// @param capacity how many records may wait for the thread
    void start(LogWriter::Sink sink, std::size_t capacity) override;
    void stop() override;
    void flush() override;
    void take(const LogRecord& record) noexcept override { admit(&record); }
    void lose() noexcept override { admit(nullptr); }

private:
    /// @param record null: it is dropped already
    void admit(const LogRecord* record) noexcept;
    void run() noexcept;
    void rest(MutexLock& lock) NEARCAST_REQUIRES(mutex_);

    Mutex mutex_;                       ///< never held while the sink is called
    std::condition_variable called_;    ///< ends the thread's rest
    std::condition_variable progress_;  ///< something was written
    RecordBatch waiting_ NEARCAST_GUARDED_BY(mutex_);
    std::size_t capacity_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::uint64_t untold_ NEARCAST_GUARDED_BY(mutex_) = 0;   ///< dropped since the thread last took what waits
    std::uint64_t taken_ NEARCAST_GUARDED_BY(mutex_) = 0;    ///< records handed over, the dropped ones too
    std::uint64_t written_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< how many of them are written, or told as dropped
    int naps_ NEARCAST_GUARDED_BY(mutex_) = 0;               ///< since something was last written
    int mostNaps_ NEARCAST_GUARDED_BY(mutex_) = 0;           ///< after so many the thread rests until it is called
    bool asleep_ NEARCAST_GUARDED_BY(mutex_) = false;        ///< the thread rests until it is called
    bool open_ NEARCAST_GUARDED_BY(mutex_) = false;
    LogWriter::Sink sink_;  ///< set before the thread begins to write, released after it has ended
    std::thread thread_;
};

/// Writes at once, on the caller's thread.
class DirectLogOutput final : public LogOutput {
public:
    explicit DirectLogOutput(std::atomic<std::uint64_t>& dropped) : LogOutput(dropped) {}

    /// @param capacity how many records the sink may cause itself while it writes one
    void start(LogWriter::Sink sink, std::size_t capacity) override;
    void stop() override;
    /// Nothing: a record is written when the call that handed it over returns.
    void flush() override {}
    void take(const LogRecord& record) noexcept override;
    void lose() noexcept override;

private:
    void keep(const LogRecord& record) noexcept;
    void drop() noexcept;

    Mutex mutex_;  ///< held while the sink is called: one call at a time
    LogWriter::Sink sink_ NEARCAST_GUARDED_BY(mutex_);
    RecordBatch caused_ NEARCAST_GUARDED_BY(mutex_);    ///< by the sink; they wait until it returns
    std::size_t room_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< how many more the record being written may cause
    std::size_t capacity_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::uint64_t untold_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< dropped, and not told yet
};

}  // namespace nearcast
