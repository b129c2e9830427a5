// SPDX-License-Identifier: Apache-2.0
#include "support/log/LogOutput.h"

#include "support/Holding.h"
#include "support/Printable.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <string_view>
#include <utility>

namespace nearcast {

namespace {

/// Waking a thread costs its caller some 20 microseconds. So a thread that had work a moment ago looks for more by
/// itself, and is called only after a second without; where a burst would fill the queue during a nap, it is always
/// called.
constexpr auto nap = std::chrono::milliseconds(1);
constexpr int napsInASecond = 1000;
constexpr std::size_t smallQueue = 4096;

thread_local bool callsSink = false;
thread_local bool hasDirectTurn = false;

void reportFailure(std::string_view what) noexcept {
    try {
        std::fprintf(stderr, "nearcast: a trace record could not be written: %s\n", printable(what).c_str());
    } catch (const std::exception&) {
        std::fputs("nearcast: a trace record could not be written, and there is not enough memory to say why\n",
                   stderr);
    }
}

}  // namespace

bool RecordBatch::add(const LogRecord& record) noexcept {
    const std::size_t before = texts_.size();
    try {
        texts_.append(record.fileName).append(record.methodName).append(record.anyString);
        records_.push_back(record);
        return true;
    } catch (...) {
        texts_.resize(before);
        return false;
    }
}

const std::vector<LogRecord>& RecordBatch::records() noexcept {
    const char* place = texts_.data();
    for (LogRecord& record : records_) {
        for (std::string_view* const text : {&record.fileName, &record.methodName, &record.anyString}) {
            *text = {place, text->size()};
            place += text->size();
        }
    }
    return records_;
}

void RecordBatch::clear() noexcept {
    constexpr std::size_t usual = 4 << 20;  // a long text shall not keep its memory until the writer stops
    if (texts_.capacity() > usual) texts_ = std::string();
    texts_.clear();
    records_.clear();
}

bool LogOutput::insideSink() noexcept { return callsSink; }

bool LogOutput::insideDirectSink() noexcept { return hasDirectTurn; }

void LogOutput::write(const LogWriter::Sink& sink, const LogRecord& record) noexcept {
    callsSink = true;
    try {
        sink(record);
    } catch (const std::exception& error) {
        reportFailure(error.what());
    } catch (...) {
        reportFailure("an exception of an unknown kind");
    }
    callsSink = false;
}

void LogOutput::writeDropped(const LogWriter::Sink& sink, std::uint64_t records) noexcept {
    if (records == 0) return;
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "%llu records were dropped", static_cast<unsigned long long>(records));
    write(sink,
          {QXLogTypeError, 0, &LogWriter::sharedInstance(), __builtin_FILE(), __builtin_LINE(),
           "-[LogWriter outputLogAsyncWithLogType:logLevel:objectAddress:fileName:lineNumber:methodName:anyString:]",
           std::string_view(text, static_cast<std::size_t>(length))});
}

void QueuedLogOutput::start(LogWriter::Sink sink, std::size_t capacity) {
    const MutexLock lock(mutex_);
    thread_ = std::thread([this] { run(); });  // it waits for the mutex
    sink_ = std::move(sink);
    capacity_ = capacity;
    mostNaps_ = capacity < smallQueue ? 0 : napsInASecond;
    naps_ = mostNaps_;
    open_ = true;
}

void QueuedLogOutput::stop() {
    {
        const MutexLock lock(mutex_);
        open_ = false;
    }
    called_.notify_one();
    thread_.join();
    sink_ = nullptr;
}

void QueuedLogOutput::flush() {
    MutexLock lock(mutex_);
    const std::uint64_t taken = taken_;
    while (written_ < taken) progress_.wait(lock.native());
}

void QueuedLogOutput::admit(const LogRecord* record) noexcept {
    bool call = false;
    {
        const MutexLock lock(mutex_);
        if (!open_) return;
        ++taken_;
        if (record == nullptr || waiting_.size() == capacity_ || !waiting_.add(*record)) {
            ++untold_;
            countDropped();
        }
        call = std::exchange(asleep_, false);
    }
    if (call) called_.notify_one();
}

void QueuedLogOutput::run() noexcept {
    RecordBatch batch;
    MutexLock lock(mutex_);
    while (open_ || written_ != taken_) {
        if (written_ == taken_) {
            rest(lock);
            continue;
        }
        std::swap(batch, waiting_);
        const std::uint64_t dropped = std::exchange(untold_, 0);
        const std::uint64_t taken = taken_;
        lock.unlock();
        for (const LogRecord& record : batch.records()) write(sink_, record);
        writeDropped(sink_, dropped);  // behind the batch: while the queue was full, nothing else was added
        batch.clear();
        lock.lock();
        written_ = taken;
        progress_.notify_all();
        naps_ = 0;
    }
    waiting_ = RecordBatch();
}

void QueuedLogOutput::rest(MutexLock& lock) {
    if (naps_ < mostNaps_) {
        ++naps_;
        called_.wait_for(lock.native(), nap);
    } else {
        asleep_ = true;
        called_.wait(lock.native());
        asleep_ = false;
    }
}

void DirectLogOutput::start(LogWriter::Sink sink, std::size_t capacity) {
    const MutexLock lock(mutex_);
    sink_ = std::move(sink);
    capacity_ = capacity;
    untold_ = 0;
}

void DirectLogOutput::stop() {
    LogWriter::Sink released;  // after the mutex
    const MutexLock lock(mutex_);
    released.swap(sink_);
}

void DirectLogOutput::take(const LogRecord& record) noexcept {
    if (insideSink()) return keep(record);
    const Holding turn;  // ends after the mutex is released
    const MutexLock lock(mutex_);
    if (!sink_) return;
    hasDirectTurn = true;
    room_ = capacity_;
    write(sink_, record);
    while (caused_.size() != 0) {
        RecordBatch batch;
        std::swap(batch, caused_);
        for (const LogRecord& next : batch.records()) write(sink_, next);
    }
    writeDropped(sink_, std::exchange(untold_, 0));
    hasDirectTurn = false;
}

void DirectLogOutput::lose() noexcept {
    if (insideSink()) return drop();
    const MutexLock lock(mutex_);
    if (!sink_) return;
    drop();
    writeDropped(sink_, std::exchange(untold_, 0));
}

/// Runs below a `take` of the same thread, which holds the mutex, or holds it itself.
void DirectLogOutput::drop() noexcept NEARCAST_NO_THREAD_SAFETY_ANALYSIS {
    ++untold_;
    countDropped();
}

/// Runs below a `take` of the same thread, which holds the mutex.
void DirectLogOutput::keep(const LogRecord& record) noexcept NEARCAST_NO_THREAD_SAFETY_ANALYSIS {
    if (room_ != 0 && caused_.add(record)) {
        --room_;
    } else {
        drop();
    }
}

}  // namespace nearcast
