// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/timeline/Timeline.h"
#include "support/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <optional>
#include <utility>

namespace nearcast {

/// A pace that goes as far as the test lets it.
class ManualPace : public Pace {
public:
    using Time = std::chrono::microseconds;

    bool waitUntil(Time time) override {
        MutexLock lock(mutex_);
        waitsFor_ = time;
        changed_.notify_all();
        while (!woken_ && reached_ < time) changed_.wait(lock.native());
        waitsFor_.reset();
        return !std::exchange(woken_, false);
    }

    void wake() override {
        std::function<void()> hook;
        {
            const MutexLock lock(mutex_);
            woken_ = true;
            hook.swap(onWake_);
            changed_.notify_all();
        }
        if (hook) hook();
    }

    [[nodiscard]] std::optional<Time> reached() const override {
        const MutexLock lock(mutex_);
        return reached_;
    }

    /// Lets the timeline come to `time`.
    void set(Time time) {
        const MutexLock lock(mutex_);
        reached_ = time;
        changed_.notify_all();
    }

    /// Returns when the driver waits for `time`.
    void awaitWaiting(Time time) {
        MutexLock lock(mutex_);
        while (waitsFor_ != time || woken_) changed_.wait(lock.native());
    }

    /// Calls `hook` once, on the thread that wakes the pace next.
    void onNextWake(std::function<void()> hook) {
        const MutexLock lock(mutex_);
        onWake_ = std::move(hook);
    }

private:
    mutable Mutex mutex_;
    std::condition_variable changed_;
    Time reached_ NEARCAST_GUARDED_BY(mutex_){0};
    std::optional<Time> waitsFor_ NEARCAST_GUARDED_BY(mutex_);
    bool woken_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::function<void()> onWake_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast
