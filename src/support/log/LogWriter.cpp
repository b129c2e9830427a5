// SPDX-License-Identifier: Apache-2.0
#include "support/Mutex.h"
#include "support/log/LogOutput.h"

#include <nearcast/LogWriter.h>

#include <bit>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace nearcast {

std::atomic<bool> LogWriter::logging_{false};
std::atomic<std::int32_t> LogWriter::maximumLevel_{0};

namespace {

void refuseInSink(const char* what) {
    if (LogOutput::insideSink()) throw std::logic_error(std::string(what) + " was called by its own sink");
}

void checkOptions(const LogWriter::Options& options) {
    constexpr std::size_t mostRecords = std::size_t{1} << 24;
    if (!options.sink) throw std::invalid_argument("LogWriter: there is no sink");
    if (options.capacity == 0) throw std::invalid_argument("LogWriter: the capacity is 0");
    if (options.capacity > mostRecords) throw std::invalid_argument("LogWriter: the capacity is more than 2^24");
}

/// At the exit of the process. A sink that calls exit() cannot be waited for.
void stopAtExit() {
    if (!LogOutput::insideSink()) LogWriter::sharedInstance().stop();
}

}  // namespace

struct LogWriter::State {
    Mutex control;  ///< one start, stop or flush at a time
    std::atomic<std::uint64_t> dropped{0};
    QueuedLogOutput queued{dropped};
    DirectLogOutput direct{dropped};
    std::atomic<LogOutput*> output{nullptr};  ///< one of the two; null while the writer is off

    void open(Options options) NEARCAST_REQUIRES(control) {
        dropped.store(0);
        LogOutput& chosen = options.synchronous ? static_cast<LogOutput&>(direct) : queued;
        chosen.start(std::move(options.sink), std::bit_ceil(options.capacity));
        maximumLevel_.store(options.maximumLevel, std::memory_order_relaxed);
        output.store(&chosen);
        logging_.store(true, std::memory_order_relaxed);
    }

    void close() NEARCAST_REQUIRES(control) {
        logging_.store(false, std::memory_order_relaxed);
        if (LogOutput* const open = output.exchange(nullptr)) open->stop();
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
    if (LogOutput::insideSink()) return;
    const MutexLock lock(state_->control);
    if (LogOutput* const output = state_->output.load()) output->flush();
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
    LogOutput* const output = state_->output.load(std::memory_order_acquire);
    if (output == nullptr) return;
    output->take({logType, logLevel, objectAddress, fileName, lineNumber, methodName, anyString});
}

/// A record found no memory before it could be handed over.
void LogWriter::lose() noexcept {
    if (LogOutput* const output = state_->output.load(std::memory_order_acquire)) output->lose();
}

}  // namespace nearcast
