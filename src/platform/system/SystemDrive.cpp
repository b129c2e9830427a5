// SPDX-License-Identifier: Apache-2.0
#include "platform/system/SystemDrive.h"

namespace nearcast {

bool SystemDrive::runFor(std::chrono::microseconds duration) {
    const auto end = SystemClock::now() + duration;
    interruption_.setAlarm(end);
    while (true) {
        interruption_.wait(descriptor());
        dispatch();
        if (interruption_.takeWake() || SystemClock::now() >= end) break;
    }
    interruption_.setAlarm(std::nullopt);
    return true;
}

}  // namespace nearcast
