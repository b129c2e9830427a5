// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace nearcast {

/// A shared pointer that several threads may read and replace at once.
///
/// It stands in for `std::atomic<std::shared_ptr>`, whose locked bit the thread sanitizer of GCC 12 and clang 14 cannot
/// follow: it holds a flag for the few instructions of a copy. No user code runs while it is held; replaced objects are
/// destroyed after it is released.
template <class T>
class AtomicShared {
public:
    AtomicShared() = default;
    AtomicShared(const AtomicShared&) = delete;
    AtomicShared& operator=(const AtomicShared&) = delete;

    [[nodiscard]] std::shared_ptr<T> load() const {
        const Holder hold(busy_);
        return pointer_;
    }

    void store(std::shared_ptr<T> next) {
        const Holder hold(busy_);
        pointer_.swap(next);
    }

    /// Empties it where it still holds `expected`.
    void clearIf(const std::shared_ptr<T>& expected) {
        std::shared_ptr<T> last;
        const Holder hold(busy_);
        if (pointer_ == expected) pointer_.swap(last);
    }

private:
    class Holder {
    public:
        explicit Holder(std::atomic_flag& busy) : busy_(busy) {
            while (busy_.test_and_set(std::memory_order_acquire)) busy_.wait(true, std::memory_order_relaxed);
        }
        ~Holder() {
            busy_.clear(std::memory_order_release);
            busy_.notify_one();
        }
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;

    private:
        std::atomic_flag& busy_;
    };

    mutable std::atomic_flag busy_ = ATOMIC_FLAG_INIT;
    std::shared_ptr<T> pointer_;
};

}  // namespace nearcast
