// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciReceiver.h"

#include <utility>

namespace nearcast {

HciReceiver::HciReceiver(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                         std::unique_ptr<HciPort> port, const HciTarget& target)
    : Radio(delegate, console, monitor, HciSession::beginning(target).state, HciSession::beginning(target).why),
      port_(std::move(port)),
      session_(*port_, target, *this) {}

// The wish is asked for each time and never passed on: two threads that start and stop at once leave whatever came
// last here too.
void HciReceiver::run(Time now) { session_.run(now, scanning()); }

void HciReceiver::conditionChanged(const HciCondition& condition) {
    if (condition.state == state()) {
        explainState(condition.why);
    } else {
        changeState(condition.state, condition.why);
    }
}

}  // namespace nearcast
