// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"
#include "support/log/RecordRing.h"

#include <nearcast/LogWriter.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <string_view>
#include <thread>

namespace nearcast {

/// What happens to records between the writer and the sink. Destroying it is allowed once nobody calls `take` any more;
/// it writes what it has taken first.
class LogWorker {
public:
    /// @param dropped counts the records that are not written; lives longer
    LogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped);
    virtual ~LogWorker() = default;
    LogWorker(const LogWorker&) = delete;
    LogWorker& operator=(const LogWorker&) = delete;

    virtual void take(const LogRecord& record) noexcept = 0;
    /// Returns when all is written that was taken before the call. Not for a sink.
    virtual void flush() = 0;

    /// Whether the calling thread is inside a sink's call.
    [[nodiscard]] static bool insideSink() noexcept;

protected:
    /// Calls the sink; what it throws is reported on standard error.
    void write(const LogRecord& record) noexcept;
    /// Writes how many records were dropped since it was last written.
    void writeDropped() noexcept;
    void drop() noexcept { dropped_.fetch_add(1); }
    [[nodiscard]] std::uint64_t dropped() const noexcept { return dropped_.load(); }
    [[nodiscard]] std::uint64_t droppedTold() const noexcept { return droppedTold_.load(); }

private:
    LogWriter::Sink sink_;
    std::atomic<std::uint64_t>& dropped_;
    std::atomic<std::uint64_t> droppedTold_{0};
};

/// Writes on a thread of its own.
class AsyncLogWorker final : public LogWorker {
public:
    /// @param capacity a power of two
    AsyncLogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped, std::size_t capacity);
    ~AsyncLogWorker() override;

    void take(const LogRecord& record) noexcept override;
    void flush() override;

private:
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    void run() noexcept;
    bool writeNext(OwnedRecord& record) noexcept;
    bool tellGap() noexcept;
    void advance() noexcept;
    void rest() noexcept;
    void sleepUntilCalled() noexcept;
    void wake() noexcept;

    RecordRing ring_;
    std::uint64_t gapAt_ = never;  ///< the worker's: the dropped records belong behind this place
    const int mostNaps_;           ///< how often the worker naps without work until it has itself called
    int naps_ = 0;                 ///< the worker's: how often it has
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint32_t> progress_{0};  ///< changes with every step of the worker, for who waits for one
    std::atomic<std::uint32_t> calls_{0};     ///< changes to end the worker's rest
    std::atomic<bool> resting_{false};
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

/// Writes at once, on the caller's thread.
class DirectLogWorker final : public LogWorker {
public:
    /// @param capacity how many records the sink may cause itself while it writes one
    DirectLogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped, std::size_t capacity);

    void take(const LogRecord& record) noexcept override;
    /// Nothing: a record is written when the call that handed it over returns.
    void flush() override {}

private:
    void keep(const LogRecord& record) noexcept;

    const std::size_t capacity_;
    Mutex mutex_;
    std::deque<OwnedRecord> kept_ NEARCAST_GUARDED_BY(mutex_);  ///< caused by the sink, they wait until it returns
    std::size_t keptForThis_ NEARCAST_GUARDED_BY(mutex_) = 0;   ///< how many the record being written has caused
};

}  // namespace nearcast
