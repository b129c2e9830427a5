// SPDX-License-Identifier: Apache-2.0
#include "platform/system/TimerService.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"
#include "platform/system/WakeUp.h"
#include "platform/timers/TimerQueue.h"
#include "support/Mutex.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <utility>

namespace nearcast {

namespace {

using TimerPointer = std::shared_ptr<TimerQueue::Timer>;

/// A firing that has been handed over. Its end, by being run or by being dropped, lets the next one be handed over.
class HandOver {
public:
    explicit HandOver(TimerPointer timer) noexcept : timer_(std::move(timer)) {}
    HandOver(HandOver&& other) noexcept : timer_(std::exchange(other.timer_, nullptr)) {}
    ~HandOver() { end(); }
    HandOver(const HandOver&) = delete;
    HandOver& operator=(const HandOver&) = delete;
    HandOver& operator=(HandOver&&) = delete;

    /// The timer to fire; null the second time.
    TimerPointer end() {
        TimerPointer timer = std::exchange(timer_, nullptr);
        if (timer) timer->endHandOver();
        return timer;
    }

private:
    TimerPointer timer_;
};

}  // namespace

class TimerService::Core : public std::enable_shared_from_this<Core> {
public:
    Core(Console& console, Executor executor)
        : console_(console),
          executor_(std::move(executor)),
          wakeUp_(std::make_shared<WakeUp>()),
          queue_(std::make_shared<TimerQueue>(
              [wakeUp = wakeUp_](std::optional<TimerQueue::Time> due) { wakeUp->setAlarm(due); })) {}

    [[nodiscard]] TimerQueue& queue() noexcept { return *queue_; }
    [[nodiscard]] int descriptor() const noexcept { return wakeUp_->alarmDescriptor(); }

    void run() {
        while (true) {
            const WakeUp::Found found = wakeUp_->wait();
            if (ending_) return;
            // Nothing but the end wakes.
            if (found.wake || !wakeUp_->take(found)) return reportEnded(console_, "timers", WakeUp::closed);
            fireDue();
        }
    }

    void dispatch() {
        wakeUp_->takeAlarm();
        fireDue();
    }

    void end() {
        ending_ = true;
        queue_->clear();
        wakeUp_->wake();
    }

    /// Waits until no firing is under way, except on this thread.
    void awaitFirings() {
        MutexLock lock(mutex_);
        while (othersFire()) fired_.wait(lock.native());
    }

private:
    void fireDue() {
        const auto due = SystemClock::now();
        // One firing makes up for all that a timer missed while the handlers before it ran.
        while (const auto timer = queue_->takeDue(due, SystemClock::now())) {
            if (executor_) {
                handOver(timer);
            } else {
                fire(timer);
            }
        }
        queue_->tellFront();  // the alarm that was taken may have been one for a timer that is not due yet
    }

    void handOver(const TimerPointer& timer) {
        if (!timer->beginHandOver()) return;
        HandOver begun(timer);  // where there is no memory for a task, this one ends it
        guarded(console_, "the timers' executor", [&] {
            executor_([core = shared_from_this(), task = std::make_shared<HandOver>(std::move(begun))] {
                if (const auto due = task->end()) core->fire(due);
            });
        });
    }

    /// A firing that is under way, on the stack of its thread: a timer that is due needs no memory to fire.
    struct Firing {
        const std::thread::id thread = std::this_thread::get_id();
        Firing* next = nullptr;
    };

    void fire(const TimerPointer& timer) {
        Firing firing;
        {
            const MutexLock lock(mutex_);
            if (ending_) return;
            firing.next = std::exchange(firings_, &firing);
        }
        guarded(console_, "a timer", [&] { timer->fire(); });
        const MutexLock lock(mutex_);
        Firing** place = &firings_;
        while (*place != &firing) place = &(*place)->next;
        *place = firing.next;
        fired_.notify_all();
    }

    [[nodiscard]] bool othersFire() const NEARCAST_REQUIRES(mutex_) {
        for (const Firing* firing = firings_; firing != nullptr; firing = firing->next) {
            if (firing->thread != std::this_thread::get_id()) return true;
        }
        return false;
    }

    Console& console_;
    const Executor executor_;
    const std::shared_ptr<WakeUp> wakeUp_;  ///< shared with the queue, which timers may keep alive
    const std::shared_ptr<TimerQueue> queue_;
    std::atomic<bool> ending_{false};
    Mutex mutex_;
    std::condition_variable fired_;
    Firing* firings_ NEARCAST_GUARDED_BY(mutex_) = nullptr;  ///< all that are under way
};

TimerService::TimerService(Console& console, Loop loop, Executor executor)
    : loop_(loop), core_(std::make_shared<Core>(console, std::move(executor))) {
    if (loop == Loop::application) return;
    const SignalsBlocked blocked;
    thread_ = std::thread([core = core_] { core->run(); });
    pthread_setname_np(thread_.native_handle(), "nearcast-timers");
}

TimerService::~TimerService() {
    core_->end();
    core_->awaitFirings();
    if (!thread_.joinable()) return;
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();  // destroyed by a handler: the thread ends when that returns
    } else {
        thread_.join();
    }
}

std::shared_ptr<NSTimer> TimerService::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    return core_->queue().add(interval, std::move(handler), SystemClock::now());
}

int TimerService::descriptor() const noexcept { return loop_ == Loop::application ? core_->descriptor() : -1; }

void TimerService::dispatch() {
    if (loop_ != Loop::application) return;
    const auto core = core_;  // a handler may destroy the service
    core->dispatch();
}

}  // namespace nearcast
