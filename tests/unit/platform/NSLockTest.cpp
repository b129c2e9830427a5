// SPDX-License-Identifier: Apache-2.0
#include "platform/NSLock.h"

#include <gtest/gtest.h>

#include <barrier>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

/// Writes down what is taken and released, while it is the observer.
class Watch : public LockObserver {
public:
    Watch() { NSLock::setObserver(this); }
    ~Watch() override { NSLock::setObserver(nullptr); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void lockChanged(std::string_view name, bool held) noexcept override {
        lines.push_back(std::string(held ? "take " : "release ") + std::string(name));
    }

    Lines lines;
};

/// Takes the lock once more, or finds that this is refused.
bool isRefused(NSLock& lock) NEARCAST_NO_THREAD_SAFETY_ANALYSIS {
    try {
        lock.lock();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
        EXPECT_NE(std::string(error.what()).find(lock.name()), std::string::npos) << error.what();
        return true;
    }
    lock.unlock();
    return false;
}

TEST(NSLock, TakenTwiceByOneThreadThrowsWithItsNameInsteadOfHanging) {
    NSLock lock("_lockA");
    {
        const NSLockGuard guard(lock);
        EXPECT_TRUE(isRefused(lock));
        EXPECT_TRUE(isRefused(lock)) << "the refusal left it held";
    }
    EXPECT_FALSE(isRefused(lock));
}

TEST(NSLock, IsHeldByItsThreadUntilItIsReleased) {
    NSLock lock("_lockA");
    {
        const NSLockGuard guard(lock);
        EXPECT_TRUE(isRefused(lock));
        EXPECT_TRUE(Holding::any()) << "the refusal changed nothing";
    }
    EXPECT_FALSE(Holding::any());
}

TEST(NSLock, TellsItsObserverWhenItIsTakenAndReleasedAndNotOfARefusal) {
    NSLock lock("_lockA");
    const Watch watch;
    {
        const NSLockGuard guard(lock);
        isRefused(lock);
    }
    EXPECT_EQ(watch.lines, (Lines{"take _lockA", "release _lockA"}));
}

TEST(NSLock, IsReleasedByAnErrorThatPassesThroughItsScope) {
    NSLock lock("_lockA");
    try {
        const NSLockGuard guard(lock);
        throw std::runtime_error("from inside");
    } catch (const std::runtime_error&) {
        EXPECT_FALSE(isRefused(lock));
    }
}

TEST(NSLock, ReleasedBeforeTheEndOfTheScopeIsReleasedOnce) {
    NSLock lock("_lockA");
    const Watch watch;
    {
        NSLockGuard guard(lock);
        guard.unlock();
        EXPECT_FALSE(isRefused(lock));
    }
    EXPECT_EQ(watch.lines, (Lines{"take _lockA", "release _lockA", "take _lockA", "release _lockA"}));
}

TEST(NSLock, KeepsOtherThreadsOutWhileItIsHeld) {
    constexpr int threads = 8;
    NSLock lock("_lockA");
    std::uint64_t count = 0;
    const auto increment = [&] {
        for (int times = 0; times < 20'000; ++times) {
            const NSLockGuard guard(lock);
            ++count;
        }
    };
    std::vector<std::thread> others;
    for (int thread = 1; thread < threads; ++thread) others.emplace_back(increment);
    increment();
    for (std::thread& other : others) other.join();
    EXPECT_EQ(count, 20'000U * threads);
    EXPECT_FALSE(isRefused(lock));
}

TEST(NSLock, AThreadThatWaitedForItMayNotTakeItTwiceEither) {
    NSLock lock("_lockA");
    std::barrier start(2);
    bool refused = false;
    std::thread other;
    {
        const NSLockGuard guard(lock);
        other = std::thread([&] {
            start.arrive_and_wait();
            const NSLockGuard own(lock);
            refused = isRefused(lock);
        });
        start.arrive_and_wait();
        for (int turns = 0; turns < 1000; ++turns) std::this_thread::yield();  // so that it mostly finds it taken
    }
    other.join();
    EXPECT_TRUE(refused);
}

TEST(NSLock, MayBeHeldBesideAnother) {
    NSLock table("_lockTable");
    NSLock registry("_lockRegistry");
    const NSLockGuard first(table);
    const NSLockGuard second(registry);
    EXPECT_TRUE(isRefused(table));
    EXPECT_TRUE(isRefused(registry));
}

}  // namespace
}  // namespace nearcast
