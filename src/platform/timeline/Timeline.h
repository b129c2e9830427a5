// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"
#include "platform/NSTimer.h"
#include "platform/timers/TimerQueue.h"
#include "support/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <optional>
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
    virtual bool waitUntil(std::chrono::microseconds time) = 0;
    /// Ends a wait that is under way, or else the next one. From any thread.
    virtual void wake() = 0;
    /// How far the timeline may be by now; nothing: the pace cannot say, and between two stops the clock stands still.
    /// From any thread; it never goes back.
    [[nodiscard]] virtual std::optional<std::chrono::microseconds> reached() const { return std::nullopt; }
};

/// A clock that moves only when it is told to, with timers on it and one source of happenings.
///
/// Whoever calls `runUntil` drives it: timers and happenings run on that thread, one after another, each at its own due
/// time. Timers come before happenings of the same moment, the older timer first. A handler may call `sleep` and so
/// move the clock on from inside; the run that called it then finds itself late, and goes on from there.
///
/// While the driver waits for its pace, the clock goes on as the pace says, up to the next thing that is due: what
/// another thread does then happens at that time.
///
/// All operations but `setSource` and `driveFromThread` may be called from any thread. One thread drives at a time: a
/// second one that wants to waits until the first has ended, or has moved the clock where the second wants it. The
/// timeline is destroyed outside of its handlers; that invalidates its timers.
class Timeline : public NSTimerService, public std::enable_shared_from_this<Timeline> {
public:
    using Time = std::chrono::microseconds;
    /// A time that no clock reaches: about 291 years, which `NSDate` can still hold.
    static constexpr Time forever = std::chrono::seconds(9'200'000'000);

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

    /// What happens beside the timers; none: nothing. Not while a run is under way. It lives longer than its place
    /// here.
    void setSource(TimelineSource* source);
    /// The source has something to come sooner than it last said: a run that waits looks again. From any thread.
    void sourceChanged();
    /// Moves the clock to `target`, through all that is due until then, that moment included.
    End runUntil(Time target);
    /// Lets all happenings of the source happen that have a time; the clock stops at the last one.
    void runToLastHappening();
    /// Passes `duration` of time: by moving the clock, or, while another thread drives, by waiting until it has passed.
    void sleep(Time duration);
    /// Ends a run that is under way, or else the next one.
    void interrupt();

    /// Drives the timeline on a thread of its own until the timeline is destroyed. With a pace only. What a happening
    /// throws goes to the console.
    void driveFromThread();

private:
    struct Next {
        enum class Kind { nothing, timer, happening } kind = Kind::nothing;
        Time at{0};
    };
    class Wheel;

    bool step(Time target);
    Next next(Time target);
    bool pass(const Next& what);
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

    mutable Mutex mutex_;
    std::condition_variable moved_;  ///< the clock, or the driver's seat
    Time now_ NEARCAST_GUARDED_BY(mutex_){0};
    std::optional<Time> waitsFor_ NEARCAST_GUARDED_BY(mutex_);  ///< where the driver stops next, while it waits
    std::thread::id driver_ NEARCAST_GUARDED_BY(mutex_);
    int depth_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< how often the driver has called itself
    TimelineSource* source_ NEARCAST_GUARDED_BY(mutex_) = nullptr;
    bool exhaustionTold_ NEARCAST_GUARDED_BY(mutex_) = false;
    bool interrupted_ NEARCAST_GUARDED_BY(mutex_) = false;
    bool ending_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

}  // namespace nearcast
