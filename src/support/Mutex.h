// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ThreadAnnotations.h"

#include <condition_variable>
#include <mutex>

namespace nearcast {

/// `std::mutex` that clang's thread-safety analysis knows. For the insides of a module; the manager's own locks are
/// `NSLock`.
class NEARCAST_CAPABILITY("mutex") Mutex {
public:
    void lock() NEARCAST_ACQUIRE() { mutex_.lock(); }
    void unlock() NEARCAST_RELEASE() { mutex_.unlock(); }
    std::mutex& native() { return mutex_; }

private:
    std::mutex mutex_;
};

/// Holds a `Mutex` for a scope.
class NEARCAST_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) NEARCAST_ACQUIRE(mutex) : lock_(mutex.native()) {}
    // NOLINTNEXTLINE(modernize-use-equals-default): the analysis does not see the release in a defaulted one
    ~MutexLock() NEARCAST_RELEASE() {}
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    /// Lets go of the mutex while user code runs, and takes it again.
    void unlock() NEARCAST_RELEASE() { lock_.unlock(); }
    void lock() NEARCAST_ACQUIRE() { lock_.lock(); }
    /// For condition variables.
    std::unique_lock<std::mutex>& native() { return lock_; }

private:
    std::unique_lock<std::mutex> lock_;
};

}  // namespace nearcast
