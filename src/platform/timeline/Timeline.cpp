// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/Timeline.h"

#include "platform/Guarded.h"
#include "support/Holding.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

namespace nearcast {

/// The right to move the clock, for a scope. A thread that does not get it waits until it does, or until another thread
/// has moved the clock to the target.
class Timeline::Wheel {
public:
    Wheel(Timeline& timeline, Time target, bool interruptible) : timeline_(timeline) {
        const auto alarm = alarmAt(target);
        const bool come = await(target, interruptible);
        if (alarm) alarm->invalidate();
        if (!come) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                    "a wait for a clock that another thread drives, which may wait for this one");
        }
    }

    ~Wheel() {
        if (!taken_) return;
        {
            const MutexLock lock(timeline_.mutex_);
            if (--timeline_.depth_ != 0) return;
            timeline_.driver_ = {};
        }
        timeline_.moved_.notify_all();
    }

    Wheel(const Wheel&) = delete;
    Wheel& operator=(const Wheel&) = delete;

    [[nodiscard]] bool taken() const { return taken_; }

private:
    /// @return false when it would wait for a driver that may be waiting for what this thread holds
    bool await(Time target, bool interruptible) {
        MutexLock lock(timeline_.mutex_);
        while (timeline_.othersDrive() && timeline_.present() < target && !timeline_.ending_ &&
               !(interruptible && timeline_.interrupted_)) {
            if (Holding::any()) return false;
            timeline_.moved_.wait(lock.native());
        }
        taken_ = !timeline_.othersDrive() && !timeline_.ending_;
        if (!taken_) return true;
        timeline_.driver_ = std::this_thread::get_id();
        ++timeline_.depth_;
        return true;
    }

    /// The driver stops only where something is due, so something has to be due where the wait ends.
    std::shared_ptr<NSTimer> alarmAt(Time target) {
        std::shared_ptr<NSTimer> alarm;
        {
            const MutexLock lock(timeline_.mutex_);
            const Time now = timeline_.present();
            if (!timeline_.othersDrive() || target <= now) return nullptr;
            alarm = timeline_.timers_->add(
                target - now, [](NSTimer&) {}, now);
        }
        if (timeline_.pace_) timeline_.pace_->wake();
        return alarm;
    }

    Timeline& timeline_;
    bool taken_ = false;
};

Timeline::Timeline(Console& console, std::unique_ptr<Pace> pace) : console_(console), pace_(std::move(pace)) {}

Timeline::~Timeline() {
    {
        const MutexLock lock(mutex_);
        ending_ = true;
        interrupted_ = true;
    }
    moved_.notify_all();
    if (pace_) pace_->wake();
    if (thread_.joinable()) thread_.join();
    timers_->clear();
}

Timeline::Time Timeline::now() const {
    const MutexLock lock(mutex_);
    return present();
}

/// Where the clock is: at the last stop, and while the driver waits for the next one on the way there.
Timeline::Time Timeline::present() const {
    if (!waitsFor_) return now_;
    const auto reached = pace_->reached();
    return reached ? std::clamp(*reached, now_, std::max(now_, *waitsFor_)) : now_;
}

bool Timeline::othersDrive() const { return driver_ != std::thread::id() && driver_ != std::this_thread::get_id(); }

std::shared_ptr<NSTimer> Timeline::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    return scheduledIdlingTimer(interval, std::move(handler), nullptr);
}

std::shared_ptr<NSTimer> Timeline::scheduledIdlingTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler,
                                                        const Idle& idle) {
    constexpr std::chrono::nanoseconds longest = forever + Time{1};
    const Time period = std::max(std::chrono::ceil<Time>(std::min(interval, longest)), Time{1});
    std::shared_ptr<NSTimer> timer;
    {
        const MutexLock lock(mutex_);
        timer = timers_->add(period, std::move(handler), present(), idle);
    }
    if (pace_) pace_->wake();  // the new timer may be the next one due
    return timer;
}

void Timeline::setSource(TimelineSource* source) {
    {
        const MutexLock lock(mutex_);
        source_ = source;
        exhaustionTold_ = false;
    }
    if (pace_) pace_->wake();
}

TimelineSource* Timeline::source() const {
    const MutexLock lock(mutex_);
    return source_;
}

void Timeline::sourceChanged() {
    if (pace_) pace_->wake();
}

Timeline::Next Timeline::next(Time target) {
    auto* const from = source();
    const auto happening = from != nullptr ? from->due() : std::nullopt;
    const MutexLock lock(mutex_);
    const auto timer = timers_->nextDue();
    const Time due = timer ? std::chrono::floor<Time>(*timer) : forever + Time(1);
    const Time happens = happening ? std::max(*happening, now_) : forever;
    const Time eventful = std::min(target, happens);
    Next next{Next::Kind::nothing, std::max(target, now_), now_, eventful};
    if (due <= eventful) {
        next.kind = Next::Kind::timer;
        next.at = std::max(due, now_);
    } else if (happening && happens <= target) {
        next.kind = Next::Kind::happening;
        next.at = happens;
    }
    if (pace_) waitsFor_ = next.at;
    return next;
}

/// Moves the clock to a stop. @return false when something else may come first, wherever the clock is then
bool Timeline::pass(const Next& stop) {
    const bool come = !pace_ || awaitPace(stop.at);
    {
        const MutexLock lock(mutex_);
        now_ = come ? std::max(now_, stop.at) : present();
        waitsFor_.reset();
    }
    moved_.notify_all();
    return come;
}

bool Timeline::awaitPace(Time time) {
    try {
        return pace_->waitUntil(time);
    } catch (const std::exception& error) {
        const MutexLock lock(mutex_);
        waitsFor_.reset();
        failure_ = error.what();
        throw;
    }
}

std::string Timeline::failure() const {
    const MutexLock lock(mutex_);
    return failure_;
}

/// What of the time ahead may be leapt over.
std::optional<TimerQueue::Lull> Timeline::lull(const Next& ahead) const {
    if (!leaps_ || ahead.eventful - ahead.from <= longestQuiet) return std::nullopt;
    const auto lull = timers_->lullBefore(ahead.eventful);
    if (lull.end - ahead.from <= longestQuiet) return std::nullopt;
    return lull;
}

/// @return whether what lies ahead may have changed: the clock has moved, or a timer was made while the others were
/// asked
bool Timeline::leap(const Next& ahead) {
    const auto lull = this->lull(ahead);
    if (!lull) return false;
    {
        const MutexLock lock(mutex_);  // a timer that another thread makes now is either in the lull or made after it
        if (!timers_->passOver(*lull)) return true;
        now_ = std::chrono::floor<Time>(lull->end);
    }
    moved_.notify_all();
    return true;
}

Timeline::Time Timeline::quiet() {
    if (!leaps_) return Time{0};
    const Wheel wheel(*this, now(), false);
    if (!wheel.taken()) return Time{0};
    const Next ahead = next(forever);
    const auto lull = this->lull(ahead);
    return lull ? std::chrono::floor<Time>(lull->end) - ahead.from : Time{0};
}

bool Timeline::step(Time target) {
    Next stop = next(target);
    if (leap(stop)) stop = next(target);
    if (!pass(stop)) return false;
    switch (stop.kind) {
        case Next::Kind::timer: fireNextTimer(); break;
        case Next::Kind::happening:
            if (auto* const from = source()) from->happen();
            break;
        case Next::Kind::nothing: return true;
    }
    return false;
}

void Timeline::fireNextTimer() {
    const Time at = now();
    const auto timer = timers_->takeDue(at, at);
    if (timer) guarded(console_, "a timer", [&] { timer->fire(); });  // else it was invalidated meanwhile
}

bool Timeline::takeInterruption() {
    const MutexLock lock(mutex_);
    return std::exchange(interrupted_, ending_);
}

bool Timeline::exhausted() {
    auto* const from = source();
    if (from == nullptr || from->due()) return false;
    const MutexLock lock(mutex_);
    return !std::exchange(exhaustionTold_, true);
}

Timeline::End Timeline::runUntil(Time time) {
    const Time target = std::min(time, forever);
    const Wheel wheel(*this, target, true);
    if (!wheel.taken()) return takeInterruption() ? End::interrupted : End::reached;
    while (!takeInterruption()) {
        if (exhausted()) return End::exhausted;
        if (step(target)) return End::reached;
    }
    return End::interrupted;
}

void Timeline::runToLastHappening() {
    const Wheel wheel(*this, forever, false);
    while (!ending()) {
        auto* const from = source();
        const auto due = from != nullptr ? from->due() : std::nullopt;
        if (!due || *due > forever) return;
        step(forever);
    }
}

void Timeline::sleep(Time duration) {
    const Time begin = now();
    const Time target = begin + std::min(duration, forever - begin);
    const Wheel wheel(*this, target, false);
    if (!wheel.taken()) return;
    while (!ending() && !step(target)) {
    }
}

bool Timeline::canSleep() const {
    if (!Holding::any()) return true;
    const MutexLock lock(mutex_);
    return !othersDrive();
}

bool Timeline::ending() const {
    const MutexLock lock(mutex_);
    return ending_;
}

void Timeline::interrupt() {
    {
        const MutexLock lock(mutex_);
        interrupted_ = true;
    }
    moved_.notify_all();
    if (pace_) pace_->wake();
}

void Timeline::driveFromThread() {
    thread_ = std::thread([this] {
        while (!ending() && failure().empty()) guarded(console_, "a happening", [this] { runUntil(forever); });
    });
}

}  // namespace nearcast
