// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Holding.h"
#include "support/ThreadAnnotations.h"

#include <atomic>
#include <cstdint>
#include <string_view>
#include <thread>

namespace nearcast {

/// Hears of every lock that is taken and released, while it is held. For `nearcast run --locks` and tests.
class LockObserver {
public:
    virtual ~LockObserver() = default;
    virtual void lockChanged(std::string_view name, bool held) noexcept = 0;
};

/// A plain mutual-exclusion lock with a name. A thread that takes it twice gets `std::system_error`
/// (`resource_deadlock_would_occur`) where another lock would hang; so does one that would have to wait for it inside a
/// synchronous sink, whose turn the holder may be waiting for.
///
/// Free, held, held and awaited: taking it when it is free and giving it back when nobody waits are one instruction
/// each, in the operation itself. An advertisement takes four of them, which is most of what it costs.
class NEARCAST_CAPABILITY("mutex") NSLock {
public:
    /// @param name lives as long as the lock
    explicit NSLock(std::string_view name) : name_(name) {}
    NSLock(const NSLock&) = delete;
    NSLock& operator=(const NSLock&) = delete;

    void lock() NEARCAST_ACQUIRE() {
        const auto self = std::this_thread::get_id();
        std::uint32_t state = isFree;
        if (!state_.compare_exchange_strong(state, isHeld, std::memory_order_acquire)) wait(self);
        owner_.store(self, std::memory_order_relaxed);
        Holding::begin();
        if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, true);
    }
    void unlock() NEARCAST_RELEASE() {
        if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, false);
        owner_.store({}, std::memory_order_relaxed);
        if (state_.exchange(isFree) == isAwaited) state_.notify_one();
        Holding::end();
    }
    [[nodiscard]] std::string_view name() const noexcept { return name_; }

    [[nodiscard]] static bool isObserved() noexcept { return observer_.load(std::memory_order_acquire) != nullptr; }
    /// One observer for all locks of the process, or none. Only while no lock is held.
    static void setObserver(LockObserver* observer) noexcept { observer_.store(observer, std::memory_order_release); }

private:
    static constexpr std::uint32_t isFree = 0;
    static constexpr std::uint32_t isHeld = 1;
    static constexpr std::uint32_t isAwaited = 2;  ///< held, and somebody may wait for it

    void wait(std::thread::id self);

    static std::atomic<LockObserver*> observer_;

    std::atomic<std::uint32_t> state_{isFree};
    std::atomic<std::thread::id> owner_{};
    std::string_view name_;
};

/// Holds a lock for a scope.
class NEARCAST_SCOPED_CAPABILITY NSLockGuard {
public:
    explicit NSLockGuard(NSLock& lock) NEARCAST_ACQUIRE(lock) : lock_(&lock) { lock.lock(); }
    ~NSLockGuard() NEARCAST_RELEASE() {
        if (lock_ != nullptr) lock_->unlock();
    }
    NSLockGuard(const NSLockGuard&) = delete;
    NSLockGuard& operator=(const NSLockGuard&) = delete;

    /// Releases before the scope ends.
    void unlock() NEARCAST_RELEASE() {
        lock_->unlock();
        lock_ = nullptr;
    }

private:
    NSLock* lock_;
};

}  // namespace nearcast
