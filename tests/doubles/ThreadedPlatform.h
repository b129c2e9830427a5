// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/timeline/TimelinePlatform.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Mutex.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <utility>

namespace nearcast::doubles {

/// A pace that goes on by what it is given.
class GivenPace : public Pace {
public:
    using Time = std::chrono::microseconds;

    bool waitUntil(Time time) override {
        MutexLock lock(mutex_);
        while (!woken_ && reached_ < time) changed_.wait(lock.native());
        return !std::exchange(woken_, false);
    }
    void wake() override {
        const MutexLock lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }
    [[nodiscard]] std::optional<Time> reached() const override {
        const MutexLock lock(mutex_);
        return reached_;
    }
    void give(Time duration) {
        const MutexLock lock(mutex_);
        reached_ += duration;
        changed_.notify_all();
    }

private:
    mutable Mutex mutex_;
    std::condition_variable changed_;
    Time reached_ NEARCAST_GUARDED_BY(mutex_){0};
    bool woken_ NEARCAST_GUARDED_BY(mutex_) = false;
};

/// A platform whose timers fire on a thread of their own, and whose time passes as it is given to it, from any thread.
/// Sleepers wait for it. The radio delivers on whatever thread lets it hear something.
class ThreadedPlatform : public TimelinePlatform {
public:
    /// Both live longer, the radios' delegate too.
    ThreadedPlatform(Console& console, const NSJSONSerialization& JSON)
        : ThreadedPlatform(console, JSON, new GivenPace) {}

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        auto radio = std::make_unique<VirtualRadio>(delegate, console_, monitor(), nullptr);
        radio_ = radio.get();
        return radio;
    }
    /// The radio made last, which belongs to whom it was made for.
    [[nodiscard]] VirtualRadio& radio() const { return *radio_; }
    void give(std::chrono::microseconds duration) { pace_.give(duration); }

private:
    ThreadedPlatform(Console& console, const NSJSONSerialization& JSON, GivenPace* pace)
        : TimelinePlatform(console, JSON, std::unique_ptr<Pace>(pace)), console_(console), pace_(*pace) {
        timeline().driveFromThread();
    }

    Console& console_;
    GivenPace& pace_;
    VirtualRadio* radio_ = nullptr;
};

}  // namespace nearcast::doubles
