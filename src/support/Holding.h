// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

namespace nearcast {

namespace holding {

using Tasks = std::vector<std::function<void()>>;

struct OfThread {
    unsigned held;   ///< how many things the thread holds
    Tasks* waiting;  ///< what it does when it has let go of the last; null: nothing
};

// Counted four times for an advertisement: the model spares a call each time.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local OfThread ofThread{0, nullptr};

}  // namespace holding

/// Says that this thread holds something that other threads may wait for: one of the manager's locks, the class's
/// monitor, the turn of a synchronous sink or of the application's console.
///
/// The application's console is not called meanwhile, for it may wait for a thread that waits for this one. What is to
/// be told then waits too, until the thread has let go of everything.
class Holding {
public:
    Holding() noexcept { begin(); }
    ~Holding() { end(); }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

    /// For what is no scope. Each begin has its end, on the same thread.
    static void begin() noexcept { ++holding::ofThread.held; }
    static void end() noexcept {
        if (--holding::ofThread.held == 0 && holding::ofThread.waiting != nullptr) [[unlikely]]
            runWaiting();
    }
    /// Whether this thread holds anything.
    [[nodiscard]] static bool any() noexcept { return holding::ofThread.held != 0; }

    /// Runs a task on this thread: at once where it holds nothing, otherwise as soon as it holds nothing any more,
    /// those that wait in their order.
    /// @param task throws nothing
    /// @throws std::bad_alloc when it would have to wait; it is then forgotten
    static void afterwards(std::function<void()> task);

private:
    static void runWaiting() noexcept;
};

}  // namespace nearcast
