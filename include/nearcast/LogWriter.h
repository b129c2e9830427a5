// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast {

class Trace;

/// The kinds of trace record.
enum QXLogType : std::int32_t {
    QXLogTypePavixAPIStart = 0,        ///< a public operation was entered
    QXLogTypePavixAPIEnd = 1,          ///< a public operation is left
    QXLogTypeInternalMethodStart = 2,  ///< an internal operation, callback or timer handler was entered
    QXLogTypeInternalMethodEnd = 3,    ///< the same is left
    QXLogTypeWrite = 4,                ///< not written by this library
    QXLogTypeRead = 5,                 ///< not written by this library
    QXLogTypeProcess = 6,              ///< a branch taken in the normal course
    QXLogTypeError = 7,                ///< a refusal or bad input
};

/// One trace record, as a sink receives it. The views hold during the call only.
struct LogRecord {
    QXLogType logType = QXLogTypeProcess;  ///< what kind of line it is
    std::int32_t logLevel = 0;             ///< 0 for what is public, higher for what lies deeper
    const void* objectAddress = nullptr;   ///< the object that speaks; for class operations the class
    std::string_view fileName;             ///< relative to the source tree
    std::uint32_t lineNumber = 0;          ///< in that file
    std::string_view methodName;           ///< for example "-[QXNearcastManager setSettings:]"
    std::string_view anyString;            ///< what happened, in words and values
};

/// The trace facility: off until started, and then one record for every entry, decision and exit of the manager.
///
/// While it is off, a record costs one relaxed load and no text is built. While it is on, the text is built
/// by the caller and handed through a bounded queue to one worker thread, which writes it to the sink; the caller
/// never waits for the sink. A full queue drops the record and counts it; the count is written as a record of its
/// own as soon as there is room.
///
/// All operations may be called from any thread. A sink runs on the worker thread (on the caller's in
/// synchronous mode), one call at a time; what it throws is reported on standard error and ends nothing. A sink may
/// cause records itself: they wait for their turn, in synchronous mode until the sink has returned, at most `capacity`
/// of them for one record. It may not call `start` or `stop`; `flush` does nothing there.
///
/// A writer that still runs when the process exits is stopped then, so that nothing is lost; it is never destroyed,
/// and threads may go on calling it.
class NEARCAST_EXPORT LogWriter {
public:
    /// Takes one record.
    using Sink = std::function<void(const LogRecord&)>;

    /// What `start` is given.
    struct Options {
        Sink sink;                      ///< where records go; see also `standardErrorSink` and `fileSink`
        std::int32_t maximumLevel = 0;  ///< records of this level and below are wanted
        /// Records that may wait for the worker, beside those that it has taken to write; rounded up to a power of two.
        std::size_t capacity = 8192;
        /// Call the sink at once, on the caller's thread; no worker is made. What such a sink calls of the manager
        /// throws `std::system_error` (`resource_deadlock_would_occur`) where it would have to wait: docs/callbacks.md.
        bool synchronous = false;
    };

    /// The one writer of the process.
    static LogWriter& sharedInstance();

    /// Whether anybody listens. One relaxed load.
    static bool isLogging() noexcept { return logging_.load(std::memory_order_relaxed); }
    /// Whether records of this level are wanted. Asked after `isLogging`.
    static bool isTargetLogLevel(std::int32_t level) noexcept {
        return level <= maximumLevel_.load(std::memory_order_relaxed);
    }

    /// Begins logging. A writer that is already running is stopped first, as by `stop`.
    /// @throws std::invalid_argument when there is no sink, or the capacity is 0 or more than 2^24; nothing has changed
    /// @throws std::system_error when no thread can be made; the writer is then off
    /// @throws std::logic_error when it is called by a sink
    void start(Options options);
    /// Returns when every record handed over before the call has been written. Nothing is lost.
    void flush();
    /// Ends logging: no later record is taken, all taken ones are written, the worker ends, the sink is released. It
    /// waits as long as the sink takes for that.
    /// @throws std::logic_error when it is called by a sink
    void stop();
    /// Records dropped since `start`, for a full queue or for want of memory. Stays readable after `stop`.
    [[nodiscard]] std::uint64_t dropped() const noexcept;

    /// Hands a record over. Called after `isLogging` and `isTargetLogLevel` said yes; while the writer is off it
    /// does nothing. The texts are copied. It never throws, and waits for a sink in synchronous mode alone.
    void outputLogAsyncWithLogType(QXLogType logType, std::int32_t logLevel, const void* objectAddress,
                                   std::string_view fileName, std::uint32_t lineNumber, std::string_view methodName,
                                   std::string_view anyString);

    /// A sink that writes one line a record to standard error, in this form, with one tab between the fields:
    ///
    ///     TYPE  LEVEL  OBJECT  FILE:LINE  METHOD  TEXT
    ///     7     0      0x55d0  src/settings/Registration.cpp:41  -[QXNearcastManager ...]  portName == nil
    ///
    /// The type is its number, the object an address in hexadecimal. In the last three fields a backslash is written
    /// `\\`, a line feed `\n`, a carriage return `\r`, a tab `\t`, and another control character as `\x` and two
    /// hexadecimal digits for each of its bytes. So a record is always one line, of always six fields.
    static Sink standardErrorSink();
    /// A sink that appends one line a record to a file, which it creates when missing, in the form of
    /// `standardErrorSink`. Each line is handed to the system at once. When writing fails, that is reported once, and
    /// again only after it has worked in between; the number of lines missing is then written in their place.
    /// @throws std::system_error naming the file when it cannot be opened
    static Sink fileSink(const std::string& path);

    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

private:
    friend class Trace;
    struct State;
    LogWriter();
    ~LogWriter();
    void lose() noexcept;

    static std::atomic<bool> logging_;
    static std::atomic<std::int32_t> maximumLevel_;
    std::unique_ptr<State> state_;
};

}  // namespace nearcast
