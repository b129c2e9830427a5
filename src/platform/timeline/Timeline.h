// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "platform/NSTimer.h"
#include "platform/timers/TimerQueue.h"
#include "support/Mutex.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace nearcast {

/// Things that happen at times of their own on a timeline: the lines of a scenario, the reports of a recording.
class TimelineSource {
public:
    virtual ~TimelineSource() = default;
    /// When the next thing happens; a time that has passed means now; nothing: no more is to come.
    virtual std::optional<std::chrono::microseconds> due() = 0;
    /// Makes it happen. What it throws ends the run and passes to its caller.
    virtual void happen() = 0;
};

/// Makes a timeline's time pass no faster than it should.
class Pace {
public:
    virtual ~Pace() = default;
    /// Waits until the timeline may reach `time`, or until `wake` is called.
    /// @return whether the moment has come
    /// @throws std::system_error when it cannot wait; then the timeline's time has ended
    virtual bool waitUntil(std::chrono::microseconds time) = 0;
    /// Ends a wait that is under way, or else the next one. From any thread.
    virtual void wake() = 0;
    /// The time that the timeline may have reached by now; nothing: the pace cannot say, and the clock stands still
    /// between two stops.
    /// From any thread; it never goes back.
    [[nodiscard]] virtual std::optional<std::chrono::microseconds> reached() const { return std::nullopt; }
};

/// A clock that moves only when it is driven, with timers on it and one source of events.
///
/// The thread that calls `runUntil` drives it: timers and events run on that thread, one after another, each at its own
/// due time. At the same moment timers come before events, the older timer first. A handler may call `sleep` and so
/// move the clock; the run that called the handler is then late, and goes on from the new time.
///
/// Where it is allowed to, a timeline without a pace leaps: of more than `longestQuiet` in which no event is due and
/// all timers are idle, nothing is played. Timers keep their times. A timer that is not idle ends a leap where it is
/// due.
///
/// While the driver waits for its pace, the clock follows the pace up to the next deadline: what another thread does
/// meanwhile gets that time.
///
/// All operations but `setSource` and `driveFromThread` may be called from any thread. One thread drives at a time: a
/// second one waits until the first has ended, or until the clock has reached the time that the second asked for. One
/// that holds what the driver may be waiting for (`Holding`) gets std::system_error (`resource_deadlock_would_occur`)
/// where it would wait. The timeline is destroyed outside of its handlers; that invalidates its timers.
class Timeline : public NSTimerService, public std::enable_shared_from_this<Timeline> {
public:
    using Time = std::chrono::microseconds;
    /// A time that no clock reaches: about 291 years, which `NSDate` can still hold.
    static constexpr Time forever = std::chrono::seconds(9'200'000'000);
    /// What is not longer is never leapt over.
    static constexpr Time longestQuiet = std::chrono::hours(1);

    enum class End {
        reached,      ///< the time was reached
        interrupted,  ///< by `interrupt`
        exhausted,    ///< the source has nothing more; told once, later runs go on without it
    };

    /// @param console where exceptions of timer handlers go; lives as long as the timeline and its timers
    /// @param pace    none: as fast as it goes
    explicit Timeline(Console& console, std::unique_ptr<Pace> pace = nullptr);
    ~Timeline() override;

    [[nodiscard]] Time now() const;
    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override;
    std::shared_ptr<NSTimer> scheduledIdlingTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler,
                                                  const Idle& idle) override;

    /// Lets it leap, for good, where it has no pace. Only for a platform whose radio hears no less when its scan is not
    /// restarted: the manager counts on that where it says that a restart is idle. From any thread.
    void allowLeaps() { leaps_ = !pace_; }
    /// For how long nothing happens from now on, where that would be leapt over; else 0, also while another thread
    /// drives. From any thread.
    Time quiet();

    /// The events beside the timers; null: none. Not while a run is under way. The source lives until another one, or
    /// none, is set.
    void setSource(TimelineSource* source);
    /// The source's next event is earlier than it last said: a run that waits looks again. From any thread.
    void sourceChanged();
    /// Moves the clock to `time`, through all that is due until then, that moment included; to `forever` at most.
    End runUntil(Time time);
    /// Runs all events of the source that have a time; the clock stops at the last one.
    void runToLastHappening();
    /// Passes `duration` of time: by moving the clock, or, while another thread drives, by waiting until it has passed.
    void sleep(Time duration);
    /// Whether `sleep` would not throw now.
    [[nodiscard]] bool canSleep() const;
    /// Ends a run that is under way, or else the next one.
    void interrupt();

    /// Drives the timeline on a thread of its own until the timeline is destroyed, or its pace cannot wait. With a pace
    /// only. What an event or the pace throws goes to the console.
    void driveFromThread();
    /// Why the pace could not wait; empty while it can. From any thread.
    [[nodiscard]] std::string failure() const;

private:
    struct Next {
        enum class Kind { nothing, timer, happening } kind = Kind::nothing;
        Time at{0};
        Time from{0};      ///< where the clock is
        Time eventful{0};  ///< when the next event comes, or the run ends
    };
    class Wheel;

    bool step(Time target);
    [[nodiscard]] std::optional<TimerQueue::Lull> lull(const Next& ahead) const;
    bool leap(const Next& ahead);
    Next next(Time target);
    bool pass(const Next& what);
    bool awaitPace(Time time);
    void fireNextTimer();
    [[nodiscard]] TimelineSource* source() const;
    [[nodiscard]] bool exhausted();
    [[nodiscard]] bool takeInterruption();
    [[nodiscard]] Time present() const NEARCAST_REQUIRES(mutex_);
    [[nodiscard]] bool othersDrive() const NEARCAST_REQUIRES(mutex_);
    [[nodiscard]] bool ending() const;

    Console& console_;
    const std::unique_ptr<Pace> pace_;
    const std::shared_ptr<TimerQueue> timers_ = std::make_shared<TimerQueue>();
    std::atomic<bool> leaps_{false};

    mutable Mutex mutex_;
    std::condition_variable moved_;  ///< the clock, or the driver's seat
    Time now_ NEARCAST_GUARDED_BY(mutex_){0};
    std::optional<Time> waitsFor_ NEARCAST_GUARDED_BY(mutex_);  ///< where the driver stops next, while it waits
    std::thread::id driver_ NEARCAST_GUARDED_BY(mutex_);
    int depth_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< how often the driver has called itself
    TimelineSource* source_ NEARCAST_GUARDED_BY(mutex_) = nullptr;
    bool exhaustionTold_ NEARCAST_GUARDED_BY(mutex_) = false;
    bool interrupted_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::string failure_ NEARCAST_GUARDED_BY(mutex_);
    bool ending_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

}  // namespace nearcast
