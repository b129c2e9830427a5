// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezRadio.h"

#include <utility>

namespace nearcast::bluez {

BluezRadio::BluezRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, SystemBus& bus,
                       const Rfkill& rfkill, std::string adapter, std::function<void()> wake)
    : Radio(delegate, console, monitor, CBManagerStateUnknown, "bluetoothd has not answered yet"),
      wake_(std::move(wake)),
      session_(bus, rfkill, *this, std::move(adapter)) {}

void BluezRadio::pass(Time now) {
    session_.pass(now);
    session_.want(scanning());
}

void BluezRadio::stateChanged(CBManagerState state, const std::string& why) {
    if (state == this->state()) {
        explainState(why);
    } else {
        changeState(state, why);
    }
}

}  // namespace nearcast::bluez
