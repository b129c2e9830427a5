// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciRadio.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"
#include "platform/system/SystemClock.h"

#include <pthread.h>

#include <utility>

namespace nearcast::hci {

HciRadio::HciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, HciPort& port,
                   AdapterService* service, const HciTarget& target, std::function<void()> wake)
    : Radio(delegate, console, monitor, HciSession::beginning(target).state, HciSession::beginning(target).why),
      wake_(std::move(wake)),
      session_(port, target, *this, service) {}

// The wish is read here and never passed on by `scanChanged`: whatever two threads want at once, the last one counts in
// both places.
void HciRadio::pass(Time now) {
    session_.want(scanning());
    session_.pass(now);
}

ThreadedHciRadio::ThreadedHciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                                   std::unique_ptr<HciPort> kernel, std::unique_ptr<AdapterService> bluetoothd,
                                   const HciTarget& target)
    : RadioParts{std::move(kernel), std::move(bluetoothd), {}},
      HciRadio(delegate, console, monitor, *port, service.get(), target, [this] { wakeUp.wake(); }) {
    processEnd_.emplace([this] { processEnds(); });
    const SignalsBlocked blocked;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "nearcast-hci");
}

ThreadedHciRadio::~ThreadedHciRadio() {
    processEnd_.reset();
    ending_ = true;
    wakeUp.wake();
    thread_.join();
}

/// The kernel closes the socket anyway; only what is more than that is waited for.
void ThreadedHciRadio::processEnds() noexcept {
    if (!owesRest()) return;
    // A handler of the application has ended the process: its thread is this one, and does not go on.
    if (std::this_thread::get_id() == runner_) {
        return guarded(console(), "the end of the radio", [this] { release(); });
    }
    ending_ = true;
    wakeUp.wake();
    release_.wait_for(longestRelease);
}

void ThreadedHciRadio::run() noexcept {
    runner_ = std::this_thread::get_id();
    if (loop()) guarded(console(), "the end of the radio", [this] { release(); });
    released_.set_value();
}

/// @return false where it cannot go on, and its descriptors are another's
bool ThreadedHciRadio::loop() noexcept {
    while (!ending_) {
        guarded(console(), "the radio", [this] { pass(SystemClock::now()); });
        wakeUp.setAlarm(due());
        if (!wakeUp.take(wakeUp.wait(descriptor()))) {
            end(WakeUp::closed);
            return false;
        }
    }
    return true;
}

}  // namespace nearcast::hci
