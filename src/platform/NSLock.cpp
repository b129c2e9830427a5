// SPDX-License-Identifier: Apache-2.0
#include "platform/NSLock.h"

#include "support/log/LogOutput.h"

#include <system_error>

namespace nearcast {

std::atomic<LockObserver*> NSLock::observer_{nullptr};

void NSLock::wait(std::thread::id self) {
    // Only a thread that holds the lock finds itself here: nobody else ever writes its name.
    // And inside a synchronous sink it may not wait: who holds the lock may be waiting for that sink.
    if (owner_.load(std::memory_order_relaxed) == self || LogOutput::insideDirectSink()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur), std::string(name_));
    }
    // Whoever takes it here leaves it awaited: there may be others, and waking nobody costs little.
    while (state_.exchange(isAwaited, std::memory_order_acquire) != isFree) {
        state_.wait(isAwaited, std::memory_order_relaxed);
    }
}

}  // namespace nearcast
