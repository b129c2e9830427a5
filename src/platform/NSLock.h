// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ThreadAnnotations.h"

#include <atomic>
#include <mutex>
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
/// (`resource_deadlock_would_occur`) where another lock would hang.
class NEARCAST_CAPABILITY("mutex") NSLock {
public:
    /// @param name lives as long as the lock
    explicit NSLock(std::string_view name) : name_(name) {}
    NSLock(const NSLock&) = delete;
    NSLock& operator=(const NSLock&) = delete;

    void lock() NEARCAST_ACQUIRE() {
        const auto self = std::this_thread::get_id();
        if (owner_.load(std::memory_order_relaxed) == self) refuse();
        mutex_.lock();
        owner_.store(self, std::memory_order_relaxed);
        if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, true);
    }
    void unlock() NEARCAST_RELEASE() {
        if (auto* observer = observer_.load(std::memory_order_acquire)) observer->lockChanged(name_, false);
        owner_.store({}, std::memory_order_relaxed);
        mutex_.unlock();
    }
    [[nodiscard]] std::string_view name() const noexcept { return name_; }

    /// One observer for all locks of the process, or none. Only while no lock is held.
    static void setObserver(LockObserver* observer) noexcept { observer_.store(observer, std::memory_order_release); }

private:
    [[noreturn]] void refuse() const;

    static std::atomic<LockObserver*> observer_;

    std::mutex mutex_;
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
