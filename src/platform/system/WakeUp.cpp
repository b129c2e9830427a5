// SPDX-License-Identifier: Apache-2.0
#include "platform/system/WakeUp.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <system_error>

namespace nearcast {

namespace {

template <std::size_t count>
bool anyClosed(const pollfd (&waiting)[count]) noexcept {
    return std::any_of(waiting, waiting + count, [](const pollfd& one) { return (one.revents & POLLNVAL) != 0; });
}

bool taken(int descriptor) noexcept {
    std::uint64_t count = 0;
    errno = 0;  // a read that gives less than a count is no failure for the system
    return read(descriptor, &count, sizeof count) == static_cast<ssize_t>(sizeof count);
}

}  // namespace

Descriptor::Descriptor(int value, const char* what) : value_(value) {
    if (value < 0) throw std::system_error(errno, std::generic_category(), what);
}

Descriptor::~Descriptor() { close(value_); }

WakeUp::WakeUp()
    : alarm_(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK), "no timer descriptor"),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "no event descriptor") {}

void WakeUp::setAlarm(std::optional<SystemClock::Time> time) noexcept {
    constexpr SystemClock::Time second = std::chrono::seconds(1);
    itimerspec spec{};
    if (time) {
        // Zero would disarm the timer; a time in the past expires at once.
        const SystemClock::Time at = std::max(*time, SystemClock::Time(1));
        spec.it_value = {at / second, (at % second).count()};
    }
    timerfd_settime(alarm_.get(), TFD_TIMER_ABSTIME, &spec, nullptr);
}

void WakeUp::wake() noexcept { eventfd_write(wake_.get(), 1); }

const short WakeUp::readable = POLLIN;

WakeUp::Found WakeUp::wait(int other, short events, int another) noexcept {
    pollfd waiting[] = {{alarm_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}, {other, events, 0}, {another, POLLIN, 0}};
    while (poll(waiting, std::size(waiting), -1) < 0) {
        if (errno != EINTR) return {.broken = true};
    }
    return {waiting[0].revents != 0, waiting[1].revents != 0, waiting[2].revents != 0, anyClosed(waiting),
            waiting[3].revents != 0};
}

WakeUp::Found WakeUp::pause(std::chrono::milliseconds longest) noexcept {
    pollfd waiting[] = {{alarm_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
    if (poll(waiting, 2, static_cast<int>(longest.count())) <= 0) return {};
    return {waiting[0].revents != 0, waiting[1].revents != 0, false, anyClosed(waiting), false};
}

// Nothing to be taken is no sign: another thread may have set the alarm anew.
bool WakeUp::take(const Found& found) noexcept {
    if (found.broken) return false;
    if (found.alarm && !takeAlarm() && errno != EAGAIN) return false;
    return !found.wake || takeWake() || errno == EAGAIN;
}

bool WakeUp::takeAlarm() noexcept { return taken(alarm_.get()); }

bool WakeUp::takeWake() noexcept { return taken(wake_.get()); }

}  // namespace nearcast
