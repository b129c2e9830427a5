// SPDX-License-Identifier: Apache-2.0
#include "platform/system/Consoles.h"

#include "support/Holding.h"
#include "support/Mutex.h"
#include "support/Printable.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <string>
#include <thread>
#include <utility>

namespace nearcast {

namespace {

/// Writes two pieces as one. @return how much of them; 0 when it cannot be written
std::size_t writeBoth(std::string_view first, std::string_view second) noexcept {
    const iovec parts[] = {{const_cast<char*>(first.data()), first.size()},
                           {const_cast<char*>(second.data()), second.size()}};
    while (true) {
        const ssize_t written = writev(STDERR_FILENO, parts, 2);
        if (written >= 0) return static_cast<std::size_t>(written);
        if (errno != EINTR) return 0;
    }
}

}  // namespace

void StandardErrorConsole::NSLog(std::string_view line) noexcept {
    if (isPrintable(line)) return writeLine(line);
    try {
        writeLine(printable(line));
    } catch (...) {
        writeLine("A line with characters that cannot be shown, and no memory to replace them.");
    }
}

void StandardErrorConsole::writeLine(std::string_view line) noexcept {
    static Mutex mutex;  // of all such consoles: a pipe takes a long line in several pieces
    const MutexLock lock(mutex);
    std::string_view end = "\n";
    while (!end.empty()) {
        const std::size_t written = writeBoth(line, end);
        if (written == 0) return;
        end.remove_prefix(written > line.size() ? written - line.size() : 0);
        line.remove_prefix(std::min(written, line.size()));
    }
}

/// The application's function, which one thread at a time is inside of.
class CallbackConsole::Function {
public:
    explicit Function(Callback callback) : callback_(std::move(callback)) {}

    [[nodiscard]] bool isInside() const noexcept {
        return caller_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    void call(std::string_view line) noexcept {
        const Holding turn;
        const MutexLock lock(mutex_);
        caller_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        callGuarded(line);
        caller_.store({}, std::memory_order_relaxed);
    }

private:
    void callGuarded(std::string_view line) noexcept {
        StandardErrorConsole instead;
        try {
            callback_(line);
        } catch (const std::exception& error) {
            instead.NSLog(line);
            instead.NSLog(error.what());
        } catch (...) {
            instead.NSLog(line);
        }
    }

    const Callback callback_;
    Mutex mutex_;
    std::atomic<std::thread::id> caller_{};
};

CallbackConsole::CallbackConsole(Callback callback) : function_(std::make_shared<Function>(std::move(callback))) {}

void CallbackConsole::NSLog(std::string_view line) noexcept {
    if (function_->isInside()) return StandardErrorConsole().NSLog(line);
    if (!Holding::any()) return function_->call(line);
    try {
        Holding::afterwards([function = function_, text = std::string(line)] { function->call(text); });
    } catch (const std::exception&) {  // no memory for a line that waits
        StandardErrorConsole().NSLog(line);
    }
}

}  // namespace nearcast
