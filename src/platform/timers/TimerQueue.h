// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSTimer.h"
#include "support/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace nearcast {

/// The timers of a timer service: which is due when. It has no clock and no thread: its driver passes the time
/// and fires what it takes out.
///
/// All operations may be called from any thread. The queue may go while timers live on; `clear` ends them.
class TimerQueue : public std::enable_shared_from_this<TimerQueue> {
public:
    using Time = std::chrono::nanoseconds;  ///< since the start of the driver's clock
    /// Told when something is due first, or nothing; called with the queue locked, so it may not call back. It lives as
    /// long as the queue.
    using FrontChanged = std::function<void(std::optional<Time> due)>;

    class Timer;

    /// A time in which no timer has anything to do.
    struct Lull {
        Time end;            ///< when the first timer is due that is not idle, or the limit where that is earlier
        std::uint64_t made;  ///< how many timers had been made before it was looked for
    };

    explicit TimerQueue(FrontChanged frontChanged = nullptr);

    /// Makes a timer that is due at `now` + `interval`, at `now` + 2 `interval`, and so on. One that was made earlier
    /// is older.
    /// @param interval at least one nanosecond is taken
    /// @param idle     as for `NSTimerService::scheduledIdlingTimer`; empty: the timer is never idle
    std::shared_ptr<NSTimer> add(Time interval, NSTimer::Handler handler, Time now,
                                 NSTimerService::Idle idle = nullptr);
    /// When the first timer is due.
    [[nodiscard]] std::optional<Time> nextDue() const;
    /// Takes the timer that is due first, of several the oldest, if it is due until `limit`. It is then due again at
    /// the first of its times after `now`: those in between were missed.
    /// @param now `limit` or later
    std::shared_ptr<Timer> takeDue(Time limit, Time now);
    /// How long all timers that are due are idle, up to `limit`. They are asked with the queue unlocked.
    [[nodiscard]] Lull lullBefore(Time limit) const;
    /// Leaves out all that is due before the lull's end: a timer is then due at the first of its times from there on.
    /// @return false when a timer has been made meanwhile, which may be due earlier; nothing was done then
    bool passOver(const Lull& lull);
    /// Tells again what is due first.
    void tellFront();
    /// Invalidates all timers, and every one that is made afterwards.
    void clear();

private:
    using Key = std::pair<Time, std::uint64_t>;  ///< due time, age

    std::shared_ptr<Timer> postponeFront(Time now) NEARCAST_REQUIRES(mutex_);
    [[nodiscard]] std::pair<Key, std::shared_ptr<Timer>> firstBehind(const Key& key) const;
    void remove(const Timer& timer);
    void tellFrontIfChanged() NEARCAST_REQUIRES(mutex_);
    [[nodiscard]] std::optional<Time> front() const NEARCAST_REQUIRES(mutex_);

    const FrontChanged frontChanged_;
    mutable Mutex mutex_;
    std::map<Key, std::shared_ptr<Timer>> timers_ NEARCAST_GUARDED_BY(mutex_);
    std::uint64_t made_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::optional<Time> told_ NEARCAST_GUARDED_BY(mutex_);
    bool cleared_ NEARCAST_GUARDED_BY(mutex_) = false;
};

/// A timer of the queue. Invalidating it lets go of the handler and what that holds, once no firing is under way.
class TimerQueue::Timer : public NSTimer, public std::enable_shared_from_this<Timer> {
public:
    Timer(std::weak_ptr<TimerQueue> queue, Time interval, Handler handler, NSTimerService::Idle idle, Key key);

    void fire() override;
    void invalidate() override;
    [[nodiscard]] bool isValid() const override;
    /// Whether it has nothing to do; one that was invalidated has not.
    [[nodiscard]] bool isIdle() const;

    /// Marks that a firing has been handed over to somebody who runs it later.
    /// @return false when one was already
    [[nodiscard]] bool beginHandOver() noexcept { return !handedOver_.exchange(true); }
    void endHandOver() noexcept { handedOver_.store(false); }

private:
    friend class TimerQueue;

    struct Task {
        Handler handler;
        NSTimerService::Idle idle;
    };

    [[nodiscard]] std::shared_ptr<const Task> task() const;
    /// Releases the task. @return whether there was one
    bool disarm();

    const std::weak_ptr<TimerQueue> queue_;
    const Time interval_;
    Key key_;  ///< the queue's, under its mutex
    std::atomic<bool> handedOver_{false};
    mutable Mutex mutex_;
    std::shared_ptr<const Task> task_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast
