// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciRadio.h"

#include "platform/Guarded.h"
#include "platform/system/SignalsBlocked.h"
#include "platform/system/SystemClock.h"

#include <pthread.h>

#include <utility>

namespace nearcast {

HciRadio::HciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                   std::unique_ptr<HciPort> port, const HciTarget& target)
    : HciReceiver(delegate, console, monitor, std::move(port), target) {
    const SignalsBlocked blocked;
    thread_ = std::thread([this] { loop(); });
    pthread_setname_np(thread_.native_handle(), "nearcast-radio");
}

HciRadio::~HciRadio() {
    ending_ = true;
    wakeUp_.wake();
    thread_.join();
}

void HciRadio::scanChanged(const std::optional<Scan>& /*scan*/) { wakeUp_.wake(); }

void HciRadio::loop() {
    while (!ending_) {
        guarded(console(), "the radio", [this] { run(SystemClock::now()); });
        wakeUp_.setAlarm(due());
        wakeUp_.wait(descriptor());
        wakeUp_.takeAlarm();
        wakeUp_.takeWake();
    }
}

}  // namespace nearcast
