// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "platform/NSTimer.h"

#include <functional>
#include <memory>
#include <thread>

namespace nearcast {

/// Timers on the machine's clock, which runs through suspend.
///
/// Handlers run on a thread of the service's own; or on whatever thread the application's executor chooses; or, where
/// the application has a loop of its own, on the thread that calls `dispatch`.
class TimerService : public NSTimerService {
public:
    /// Takes a task and runs it soon, or drops it: then that firing does not come. There is one task a timer at most;
    /// firings that are missed while it waits come as one after it.
    using Executor = std::function<void(std::function<void()> task)>;
    enum class Loop {
        ownThread,    ///< a thread is made
        application,  ///< the application waits for `descriptor` and calls `dispatch`
    };

    /// @param console  where exceptions of handlers go; lives longer, and longer than the executor's tasks
    /// @param executor where handlers run; without one, where `loop` says
    /// @throws std::system_error when the system gives no descriptors or no thread
    explicit TimerService(Console& console, Loop loop = Loop::ownThread, Executor executor = nullptr);
    /// Invalidates all timers and waits for the firings that are under way, except one that itself calls this. Tasks
    /// that an executor still holds do nothing any more.
    ~TimerService() override;
    TimerService(const TimerService&) = delete;
    TimerService& operator=(const TimerService&) = delete;

    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override;

    /// Readable when a timer is due; -1 with a thread of its own. It stays the service's.
    [[nodiscard]] int descriptor() const noexcept;
    /// Fires the timers that are due, each once, and returns. With a thread of its own it does nothing.
    void dispatch();

private:
    class Core;

    const Loop loop_;
    const std::shared_ptr<Core> core_;  ///< shared with the thread and with tasks, which may outlive the service
    std::thread thread_;
};

}  // namespace nearcast
