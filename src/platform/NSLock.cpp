// SPDX-License-Identifier: Apache-2.0
#include "platform/NSLock.h"

#include <system_error>

namespace nearcast {

std::atomic<LockObserver*> NSLock::observer_{nullptr};

void NSLock::refuse() const {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur), std::string(name_));
}

}  // namespace nearcast
