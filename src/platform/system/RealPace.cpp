// SPDX-License-Identifier: Apache-2.0
#include "platform/system/RealPace.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace nearcast {

namespace {

using Seconds = std::chrono::duration<double>;

// Far enough for every timeline, and near enough for all sums of nanoseconds.
constexpr Seconds farthest = std::chrono::hours(24 * 365 * 100);

double checked(double speed) {
    if (std::isfinite(speed) && speed > 0) return speed;
    throw std::invalid_argument("a timeline's speed is a finite number above 0");
}

}  // namespace

RealPace::RealPace(double speed) : speed_(checked(speed)) {}

SystemClock::Time RealPace::start() {
    const MutexLock lock(mutex_);
    if (!start_) start_ = SystemClock::now();
    return *start_;
}

bool RealPace::waitUntil(std::chrono::microseconds time) {
    const Seconds after = std::clamp(Seconds(time) / speed_, Seconds(0), farthest);
    const auto moment = start() + std::chrono::ceil<SystemClock::Time>(after);
    wakeUp_.setAlarm(moment);
    // Whoever calls `wake` may have made something due before `time`, even where `time` has come.
    while (!wakeUp_.takeWake()) {
        if (SystemClock::now() >= moment) return true;
        wakeUp_.wait();
        wakeUp_.takeAlarm();
    }
    return false;
}

std::optional<std::chrono::microseconds> RealPace::reached() const {
    const MutexLock lock(mutex_);
    if (!start_) return std::nullopt;
    const Seconds after = std::min(Seconds(SystemClock::now() - *start_) * speed_, farthest);
    return std::chrono::floor<std::chrono::microseconds>(after);
}

}  // namespace nearcast
