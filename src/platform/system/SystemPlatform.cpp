// SPDX-License-Identifier: Apache-2.0
#include "platform/system/SystemPlatform.h"

#include "platform/system/SystemClock.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace nearcast {

SystemPlatform::SystemPlatform(Console& console, const NSJSONSerialization& JSON, OpenRadio openRadio,
                               TimerService::Loop loop, TimerService::Executor executor)
    : console_(console),
      JSON_(JSON),
      openRadio_(std::move(openRadio)),
      timers_(console, loop, std::move(executor)),
      monitor_(console, [this] { return date(); }) {}

std::unique_ptr<CBCentralManager> SystemPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    return openRadio_(delegate, monitor_);
}

NSDate SystemPlatform::date() const { return NSDate(SystemClock::now()); }

void SystemPlatform::usleep(std::chrono::microseconds duration) {
    constexpr std::chrono::microseconds longest = std::chrono::hours(24 * 365 * 100);
    SystemClock::sleepUntil(SystemClock::now() + std::min(duration, longest));
}

std::shared_ptr<NSTimer> SystemPlatform::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    return timers_.scheduledTimer(interval, std::move(handler));
}

bool SystemDrive::runFor(std::chrono::microseconds duration) {
    const auto end = SystemClock::now() + duration;
    interruption_.setAlarm(end);
    while (true) {
        if (interruption_.wait(descriptor()).broken) {
            throw std::system_error(EBADF, std::generic_category(), "the platform's descriptors were closed");
        }
        dispatch();
        if (interruption_.takeWake() || SystemClock::now() >= end) break;
    }
    interruption_.setAlarm(std::nullopt);
    return true;
}

}  // namespace nearcast
