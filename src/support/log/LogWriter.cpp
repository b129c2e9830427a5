// SPDX-License-Identifier: Apache-2.0
#include "support/log/LogWorker.h"
#include "support/Mutex.h"

#include <nearcast/LogWriter.h>

#include <bit>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace nearcast {

std::atomic<bool> LogWriter::logging_{false};
std::atomic<std::int32_t> LogWriter::maximumLevel_{0};

namespace {

/// Lets threads through to the worker while it is open, without a lock, and tells when the last one has left.
class Gate {
public:
    void open() noexcept { state_.fetch_or(isOpen); }

    /// Returns once nobody is inside.
    void close() noexcept {
        std::uint32_t state = state_.fetch_and(~isOpen) & ~isOpen;
        while (state != 0) {
            state_.wait(state);
            state = state_.load();
        }
    }

    [[nodiscard]] bool enter() noexcept {
        std::uint32_t state = state_.load(std::memory_order_relaxed);
        while ((state & isOpen) != 0) {
            if (state_.compare_exchange_weak(state, state + 1)) return true;
        }
        return false;
    }

    void leave() noexcept {
        if (state_.fetch_sub(1) == 1) state_.notify_all();  // closed, and this was the last one
    }

private:
    static constexpr std::uint32_t isOpen = std::uint32_t{1} << 31;
    std::atomic<std::uint32_t> state_{0};  ///< how many are inside, and whether it is open
};

void refuseInSink(const char* what) {
    if (LogWorker::insideSink()) throw std::logic_error(std::string(what) + " was called by its own sink");
}

void checkOptions(const LogWriter::Options& options) {
    constexpr std::size_t mostRecords = std::size_t{1} << 24;
    if (!options.sink) throw std::invalid_argument("LogWriter: there is no sink");
    if (options.capacity == 0) throw std::invalid_argument("LogWriter: the capacity is 0");
    if (options.capacity > mostRecords) throw std::invalid_argument("LogWriter: the capacity is more than 2^24");
}

/// At the exit of the process. A sink that calls exit() cannot be waited for.
void stopAtExit() {
    if (!LogWorker::insideSink()) LogWriter::sharedInstance().stop();
}

}  // namespace

struct LogWriter::State {
    Mutex control;  ///< one start, stop or flush at a time
    std::unique_ptr<LogWorker> worker NEARCAST_GUARDED_BY(control);

    Gate gate;
    std::atomic<LogWorker*> entrance{nullptr};  ///< the worker, for threads inside the gate
    std::atomic<std::uint64_t> dropped{0};

    void close() NEARCAST_REQUIRES(control) {
        logging_.store(false, std::memory_order_relaxed);
        gate.close();
        entrance.store(nullptr);
        worker.reset();
    }

    void open(Options options) NEARCAST_REQUIRES(control) {
        dropped.store(0);
        const std::size_t capacity = std::bit_ceil(options.capacity);
        if (options.synchronous) {
            worker = std::make_unique<DirectLogWorker>(std::move(options.sink), dropped, capacity);
        } else {
            worker = std::make_unique<AsyncLogWorker>(std::move(options.sink), dropped, capacity);
        }
        maximumLevel_.store(options.maximumLevel, std::memory_order_relaxed);
        entrance.store(worker.get());
        gate.open();
        logging_.store(true, std::memory_order_relaxed);
    }
};

LogWriter::LogWriter() : state_(std::make_unique<State>()) {}

LogWriter::~LogWriter() = default;

LogWriter& LogWriter::sharedInstance() {
    static LogWriter* const instance = new LogWriter;  // never destroyed: threads may log until the very end
    return *instance;
}

void LogWriter::start(Options options) {
    checkOptions(options);
    refuseInSink("LogWriter::start");
    [[maybe_unused]] static const int registered = std::atexit(stopAtExit);
    const MutexLock lock(state_->control);
    state_->close();
    state_->open(std::move(options));
}

void LogWriter::flush() {
    if (LogWorker::insideSink()) return;
    const MutexLock lock(state_->control);
    if (state_->worker) state_->worker->flush();
}

void LogWriter::stop() {
    refuseInSink("LogWriter::stop");
    const MutexLock lock(state_->control);
    state_->close();
}

std::uint64_t LogWriter::dropped() const noexcept { return state_->dropped.load(); }

void LogWriter::outputLogAsyncWithLogType(QXLogType logType, std::int32_t logLevel, const void* objectAddress,
                                          std::string_view fileName, std::uint32_t lineNumber,
                                          std::string_view methodName, std::string_view anyString) {
    if (!state_->gate.enter()) return;
    state_->entrance.load()->take({logType, logLevel, objectAddress, fileName, lineNumber, methodName, anyString});
    state_->gate.leave();
}

}  // namespace nearcast
