// SPDX-License-Identifier: Apache-2.0
#include "platform/system/RealPace.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <stdexcept>
#include <string>
#include <system_error>

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

/// Waits until the alarm has rung or somebody has woken us.
/// @return whether somebody has
bool RealPace::awaitEither() {
    const WakeUp::Found found = wakeUp_.wait();
    if (wakeUp_.take(found)) return found.wake;
    throw std::system_error(EBADF, std::generic_category(), std::string("the clock stands: ") + WakeUp::closed);
}

bool RealPace::waitUntil(std::chrono::microseconds time) {
    const Seconds after = std::clamp(Seconds(time) / speed_, Seconds(0), farthest);
    const auto moment = start() + std::chrono::ceil<SystemClock::Time>(after);
    wakeUp_.setAlarm(moment);
    // Whoever calls `wake` may have made something due before `time`, even where `time` has come.
    bool woken = wakeUp_.takeWake();
    while (!woken) {
        if (SystemClock::now() >= moment) return true;
        woken = awaitEither();
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
