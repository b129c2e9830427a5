// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "support/Mutex.h"

#include <atomic>
#include <functional>
#include <string_view>
#include <thread>
#include <utility>

namespace nearcast {

/// Writes each line to standard error, printable and in one piece, so that the lines of several threads do not mix.
/// Where standard error cannot be written, lines are lost.
class StandardErrorConsole : public Console {
public:
    void NSLog(std::string_view line) noexcept override;

private:
    static void writeLine(std::string_view line) noexcept;
};

/// Hands each line to a function of the application's, one call at a time. Lines that the function causes itself, and
/// those it throws at, go to standard error.
class CallbackConsole : public Console {
public:
    using Callback = std::function<void(std::string_view line)>;

    explicit CallbackConsole(Callback callback) : callback_(std::move(callback)) {}
    void NSLog(std::string_view line) noexcept override;

private:
    void call(std::string_view line) noexcept;

    const Callback callback_;
    Mutex mutex_;
    std::atomic<std::thread::id> caller_{};  ///< the thread that is inside the callback
};

}  // namespace nearcast
