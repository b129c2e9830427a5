// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"

#include <functional>
#include <memory>
#include <string_view>

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
///
/// The function may call the manager, so a thread that holds a lock of the manager's does not call it, nor wait for
/// another one's call: its lines are handed over when it has released the last, on the same thread and in their order.
class CallbackConsole : public Console {
public:
    using Callback = std::function<void(std::string_view line)>;

    explicit CallbackConsole(Callback callback);
    void NSLog(std::string_view line) noexcept override;

private:
    class Function;

    const std::shared_ptr<Function> function_;  ///< shared with lines that wait
};

}  // namespace nearcast
