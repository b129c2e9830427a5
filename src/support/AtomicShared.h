// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"

#include <atomic>
#include <memory>

namespace nearcast {

/// A shared pointer that several threads may read and replace at once.
///
/// It stands in for `std::atomic<std::shared_ptr>`, whose locked bit the thread sanitizer of GCC 12 and clang 14 cannot
/// follow: a mutex is held for the few instructions of a copy. No user code runs while it is held; replaced objects are
/// destroyed after it is released.
template <class T>
class AtomicShared {
public:
    AtomicShared() = default;
    AtomicShared(const AtomicShared&) = delete;
    AtomicShared& operator=(const AtomicShared&) = delete;

    [[nodiscard]] std::shared_ptr<T> load() const {
        const MutexLock lock(mutex_);
        return pointer_;
    }

    /// Whether it holds nothing, at the cost of one load.
    [[nodiscard]] bool empty() const noexcept { return current_.load(std::memory_order_acquire) == nullptr; }

    /// Reads anew into `held`. As long as it is the same object, that costs one load.
    void reload(std::shared_ptr<T>& held) const {
        // What is held cannot have been destroyed, so no other object can be in its place.
        if (current_.load(std::memory_order_acquire) != held.get()) held = load();
    }

    void store(std::shared_ptr<T> next) {
        const MutexLock lock(mutex_);
        pointer_.swap(next);
        current_.store(pointer_.get(), std::memory_order_release);
    }

    /// Empties it where it still holds `expected`.
    void clearIf(const std::shared_ptr<T>& expected) {
        std::shared_ptr<T> last;
        const MutexLock lock(mutex_);
        if (pointer_ != expected) return;
        pointer_.swap(last);
        current_.store(nullptr, std::memory_order_release);
    }

private:
    mutable Mutex mutex_;
    std::shared_ptr<T> pointer_ NEARCAST_GUARDED_BY(mutex_);
    std::atomic<T*> current_{nullptr};  ///< what `pointer_` points to; only to compare with
};

}  // namespace nearcast
