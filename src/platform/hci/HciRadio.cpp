// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciRadio.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"
#include "platform/system/SystemClock.h"

#include <pthread.h>

#include <utility>

namespace nearcast::hci {

HciRadio::HciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, HciPort& port,
                   const HciTarget& target, std::function<void()> wake)
    : Radio(delegate, console, monitor, HciSession::beginning(target).state, HciSession::beginning(target).why),
      wake_(std::move(wake)),
      session_(port, target, *this) {}

// The wish is read here and never passed on by `scanChanged`: whatever two threads want at once, the last one counts in
// both places.
void HciRadio::pass(Time now) {
    session_.want(scanning());
    session_.pass(now);
}

ThreadedHciRadio::ThreadedHciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                                   std::unique_ptr<HciPort> kernel, const HciTarget& target)
    : RadioParts{std::move(kernel), {}},
      HciRadio(delegate, console, monitor, *port, target, [this] { wakeUp.wake(); }) {
    const SignalsBlocked blocked;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "nearcast-hci");
}

ThreadedHciRadio::~ThreadedHciRadio() {
    ending_ = true;
    wakeUp.wake();
    thread_.join();
}

void ThreadedHciRadio::run() noexcept {
    while (!ending_) {
        guarded(console(), "the radio", [this] { pass(SystemClock::now()); });
        wakeUp.setAlarm(due());
        if (!wakeUp.take(wakeUp.wait(descriptor()))) return end(WakeUp::closed);
    }
}

}  // namespace nearcast::hci
