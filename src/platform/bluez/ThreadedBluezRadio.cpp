// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/ThreadedBluezRadio.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"

#include <pthread.h>

#include <algorithm>
#include <utility>

namespace nearcast::bluez {

ThreadedBluezRadio::ThreadedBluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                                       std::string adapter)
    : RadioParts(console),
      BluezRadio(delegate, console, monitor, bus, rfkill, std::move(adapter), [this] { wakeUp.wake(); }) {
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
    while (!ending_.load()) {
        bool more = false;
        guarded(console(), "the system bus", [&] {
            pass(SystemClock::now());
            more = bus.process();
        });
        if (!more) wait();
    }
}

/// Until the bus has something, a moment has come or a wish has changed. Of the alarm and the wake-up only what has
/// happened is touched: each is a system call, and there are a thousand reports a second.
void ThreadedBluezRadio::wait() noexcept {
    std::optional<Time> next = due();
    if (const auto left = bus.left()) {
        const Time busDue = SystemClock::now() + *left;
        next = next ? std::min(*next, busDue) : busDue;
    }
    if (next != alarm_) wakeUp.setAlarm(next);
    alarm_ = next;
    const WakeUp::Found found = wakeUp.wait(bus.descriptor(), bus.events());
    if (found.wake) wakeUp.takeWake();
    if (!found.alarm) return;
    wakeUp.takeAlarm();
    alarm_.reset();
}

}  // namespace nearcast::bluez
