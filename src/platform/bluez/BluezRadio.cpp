// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezRadio.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"

#include <pthread.h>

#include <algorithm>
#include <utility>

namespace nearcast::bluez {

BluezRadio::BluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, SystemBus& bus,
                       const Rfkill& rfkill, MgmtPort& mgmt, std::string adapter, std::function<void()> wake)
    : Radio(delegate, console, monitor, BluezSession::beginning().state, BluezSession::beginning().why),
      wake_(std::move(wake)),
      session_(bus, rfkill, mgmt, *this, std::move(adapter)) {}

void BluezRadio::pass(Time now, bool due) {
    session_.setTime(now);
    if (!due) return;
    session_.pass(now);
    session_.want(scanning());
}

ThreadedBluezRadio::ThreadedBluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                                       std::string adapter)
    : RadioParts(console),
      BluezRadio(delegate, console, monitor, bus, rfkill, mgmt, std::move(adapter), [this] { wakeUp.wake(); }) {
    const SignalsBlocked blocked;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "nearcast-bluez");
}

ThreadedBluezRadio::~ThreadedBluezRadio() {
    ending_.store(true);
    wakeUp.wake();
    thread_.join();
}

void ThreadedBluezRadio::run() noexcept {
    bool needed = true;
    while (!ending_.load()) {
        bool more = false;
        guarded(console(), "the system bus", [&] { more = turn(needed); });
        needed = true;
        if (more) continue;
        const WakeUp::Found found = wait();
        if (!take(found)) return end(WakeUp::closed);
        needed = found.wake || found.alarm || found.another;
    }
}

/// @param needed whether `pass` is due, or another scan may be wanted
/// @return whether the bus may have more
bool ThreadedBluezRadio::turn(bool needed) {
    const Time now = SystemClock::now();
    crowding_.turn(now);
    pass(now, needed);
    const SdBus::Taken taken = bus.process(crowding_.crowded() || needed);
    crowding_.taken(taken.messages, taken.more);
    return taken.more;
}

/// Waits for the bus, or for a short while where it is busy, for the kernel's news, the alarm and `wake`.
WakeUp::Found ThreadedBluezRadio::wait() noexcept {
    std::optional<Time> next = due();
    if (const auto left = bus.left()) {
        const Time busDue = SystemClock::now() + *left;
        next = next ? std::min(*next, busDue) : busDue;
    }
    if (next != alarm_) wakeUp.setAlarm(next);
    alarm_ = next;
    if (crowding_.pausing()) return wakeUp.pause(Crowding::interval);
    return wakeUp.wait(bus.descriptor(), bus.events(), mgmt.descriptor());
}

/// Forgets what was found. What needs no system call has none, for there are a thousand reports a second: an alarm that
/// has expired is not read, but set anew.
/// @return whether it is still ours: an alarm that rings before its time is not
bool ThreadedBluezRadio::take(const WakeUp::Found& found) noexcept {
    if (found.alarm && (!alarm_ || SystemClock::now() < *alarm_)) return false;
    return wakeUp.take({.wake = found.wake, .broken = found.broken});
}

}  // namespace nearcast::bluez
