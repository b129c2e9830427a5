// SPDX-License-Identifier: Apache-2.0
#include "support/log/LogWorker.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>

namespace nearcast {

namespace {

/// Waking a thread costs its caller several microseconds. So a worker that had work a moment ago looks for more by
/// itself, and has itself called only after a second without; a ring so small that a burst fills it during a nap has it
/// called always.
constexpr auto nap = std::chrono::milliseconds(1);
constexpr int napsInASecond = 1000;
constexpr std::size_t smallRing = 4096;

thread_local bool callsSink = false;

void reportFailure(const char* what) noexcept {
    std::fprintf(stderr, "nearcast: a trace record could not be written: %s\n", what);
}

}  // namespace

LogWorker::LogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped)
    : sink_(std::move(sink)), dropped_(dropped) {}

bool LogWorker::insideSink() noexcept { return callsSink; }

void LogWorker::write(const LogRecord& record) noexcept {
    callsSink = true;
    try {
        sink_(record);
    } catch (const std::exception& error) {
        reportFailure(error.what());
    } catch (...) {
        reportFailure("an exception of an unknown kind");
    }
    callsSink = false;
}

void LogWorker::writeDropped() noexcept {
    const std::uint64_t now = dropped();
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%llu records were dropped",
                                     static_cast<unsigned long long>(now - droppedTold()));
    write({QXLogTypeError, 0, &LogWriter::sharedInstance(), __builtin_FILE(), __builtin_LINE(),
           "-[LogWriter outputLogAsyncWithLogType:logLevel:objectAddress:fileName:lineNumber:methodName:anyString:]",
           std::string_view(text, static_cast<std::size_t>(length))});
    droppedTold_.store(now);
}

AsyncLogWorker::AsyncLogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped, std::size_t capacity)
    : LogWorker(std::move(sink), dropped),
      ring_(capacity),
      mostNaps_(capacity < smallRing ? 0 : napsInASecond),
      naps_(mostNaps_),
      thread_([this] { run(); }) {}

AsyncLogWorker::~AsyncLogWorker() {
    ending_.store(true);
    calls_.fetch_add(1);
    calls_.notify_one();
    thread_.join();
}

void AsyncLogWorker::take(const LogRecord& record) noexcept {
    if (ring_.push(record) != RecordRing::Push::taken) drop();
    // Sequentially consistent with sleepUntilCalled(): either it sees the record, or this thread sees it resting.
    if (resting_.load()) wake();
}

void AsyncLogWorker::wake() noexcept {
    if (!resting_.exchange(false)) return;  // another thread does it
    calls_.fetch_add(1);
    calls_.notify_one();
}

void AsyncLogWorker::flush() {
    const std::uint64_t taken = ring_.claimed();
    const std::uint64_t gaps = dropped();
    while (true) {
        const std::uint32_t seen = progress_.load();
        if (written_.load() >= taken && droppedTold() >= gaps) return;
        progress_.wait(seen);
    }
}

void AsyncLogWorker::run() noexcept {
    OwnedRecord record;
    while (true) {
        const bool ending = ending_.load();  // asked first: what is found afterwards is then the last
        if (writeNext(record) || tellGap()) continue;
        if (ending) return;
        rest();
    }
}

bool AsyncLogWorker::writeNext(OwnedRecord& record) noexcept {
    const RecordRing::Pop what = ring_.pop(record);
    if (what == RecordRing::Pop::empty) return false;
    if (what == RecordRing::Pop::record) {
        write(record.view());
        record.trim();
    }
    naps_ = 0;
    tellGap();
    written_.store(ring_.popped());
    advance();
    return true;
}

/// Records are dropped behind those that wait at the time; that is where their number is told.
bool AsyncLogWorker::tellGap() noexcept {
    if (gapAt_ == never) {
        if (dropped() == droppedTold()) return false;
        gapAt_ = ring_.claimed();
    }
    if (ring_.popped() < gapAt_) return false;
    gapAt_ = never;
    writeDropped();
    advance();
    return true;
}

void AsyncLogWorker::advance() noexcept {
    progress_.fetch_add(1);
    progress_.notify_all();
}

void AsyncLogWorker::rest() noexcept {
    if (naps_ == mostNaps_) return sleepUntilCalled();
    ++naps_;
    std::this_thread::sleep_for(nap);
}

void AsyncLogWorker::sleepUntilCalled() noexcept {
    const std::uint32_t seen = calls_.load();
    resting_.store(true);
    const bool gap = gapAt_ == never && dropped() != droppedTold();
    if (!ring_.ready() && !gap && !ending_.load()) calls_.wait(seen);
    resting_.store(false);
}

DirectLogWorker::DirectLogWorker(LogWriter::Sink sink, std::atomic<std::uint64_t>& dropped, std::size_t capacity)
    : LogWorker(std::move(sink), dropped), capacity_(capacity) {}

void DirectLogWorker::take(const LogRecord& record) noexcept {
    if (insideSink()) return keep(record);
    const MutexLock lock(mutex_);
    keptForThis_ = 0;
    write(record);
    while (!kept_.empty()) {
        const OwnedRecord next = std::move(kept_.front());
        kept_.pop_front();
        write(next.view());
    }
    if (dropped() != droppedTold()) writeDropped();
}

/// Runs below a `take` of the same thread, which holds the mutex.
void DirectLogWorker::keep(const LogRecord& record) noexcept NEARCAST_NO_THREAD_SAFETY_ANALYSIS {
    if (keptForThis_ == capacity_) return drop();
    try {
        kept_.emplace_back(record);
        ++keptForThis_;
    } catch (...) {
        drop();
    }
}

}  // namespace nearcast
