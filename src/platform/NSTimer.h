// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace nearcast {

/// A repeating timer. It runs until it is invalidated: dropping the last reference to it does not end it.
class NSTimer {
public:
    using Handler = std::function<void(NSTimer& timer)>;

    virtual ~NSTimer() = default;

    /// Runs the handler at once, on the calling thread, without changing the schedule. What the handler throws passes
    /// to the caller. On an invalidated timer it does nothing.
    virtual void fire() = 0;
    /// Ends the timer: no firing begins after the call. It never blocks, so one that is under way on another thread
    /// may still be running; it may be called from inside the handler.
    virtual void invalidate() = 0;
    /// Whether it has not been invalidated; never blocks.
    [[nodiscard]] virtual bool isValid() const = 0;
};

/// Makes timers, and runs their handlers.
///
/// A timer made at moment t with interval d is due at t + d, t + 2 d, and so on. Timers that are due together fire in
/// the order they were made. Firings missed while the machine slept, or a handler ran, come once. What a handler throws
/// is caught and put on the console.
class NSTimerService {
public:
    /// Whether a firing now would show nothing to anybody, and neither would any later one until something else
    /// happens. Asked with no lock held, on the thread that fires; it throws nothing, lasts a moment and calls no code
    /// of the application.
    using Idle = std::function<bool()>;

    virtual ~NSTimerService() = default;
    /// @param interval more than zero
    virtual std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) = 0;
    /// The same for a timer that at times has nothing to do. A service whose time is not everybody's may leave out the
    /// firings of such a time, all together, and the timer stays due at multiples of its interval; one on the machine's
    /// clock does not ask and fires each.
    virtual std::shared_ptr<NSTimer> scheduledIdlingTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler,
                                                          const Idle& /*idle*/) {
        return scheduledTimer(interval, std::move(handler));
    }
};

}  // namespace nearcast
