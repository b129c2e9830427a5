// SPDX-License-Identifier: Apache-2.0
#include "platform/NSLock.h"

#include <system_error>

namespace nearcast {

std::atomic<LockObserver*> NSLock::observer_{nullptr};

void NSLock::lock() {
    const auto self = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) == self) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur), std::string(name_));
    }
    mutex_.lock();
    owner_.store(self, std::memory_order_relaxed);
    if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, true);
}

void NSLock::unlock() {
    if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, false);
    owner_.store({}, std::memory_order_relaxed);
    mutex_.unlock();
}

}  // namespace nearcast
