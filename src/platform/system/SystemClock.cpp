// SPDX-License-Identifier: Apache-2.0
#include "platform/system/SystemClock.h"

#include <algorithm>
#include <ctime>

namespace nearcast {

namespace {

timespec specOf(SystemClock::Time time) noexcept {
    constexpr SystemClock::Time second = std::chrono::seconds(1);
    return {time / second, (time % second).count()};
}

}  // namespace

SystemClock::Time SystemClock::now() noexcept {
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);  // cannot fail: the clock exists since Linux 2.6.39
    return std::chrono::seconds(time.tv_sec) + Time(time.tv_nsec);
}

void SystemClock::sleepUntil(Time time) noexcept {
    // A signal ends a sleep early. So does a system that cannot sleep on this clock (some sandboxes); there a sleep
    // that does not count suspend is repeated until the moment has come.
    constexpr Time step = std::chrono::milliseconds(100);
    const timespec until = specOf(time);
    for (Time left = time - now(); left > Time(0); left = time - now()) {
        if (clock_nanosleep(CLOCK_BOOTTIME, TIMER_ABSTIME, &until, nullptr) == 0) continue;
        const timespec some = specOf(std::min(left, step));
        clock_nanosleep(CLOCK_MONOTONIC, 0, &some, nullptr);
    }
}

}  // namespace nearcast
