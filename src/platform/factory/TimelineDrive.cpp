// SPDX-License-Identifier: Apache-2.0
#include "platform/factory/TimelineDrive.h"

namespace nearcast {

bool TimelineDrive::runFor(std::chrono::microseconds duration) {
    Timeline& timeline = platform_.timeline();
    if (timeline.runUntil(timeline.now() + duration) == Timeline::End::exhausted) exhausted_ = true;
    return !exhausted_;
}

}  // namespace nearcast
