// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLock.h"
#include "support/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <semaphore>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace nearcast::doubles {

/// A task on a thread of its own. One that never ends cannot be joined: then the process ends, and the test has failed.
class Crosser {
public:
    explicit Crosser(std::function<void()> task) {
        std::packaged_task<void()> packaged(std::move(task));
        done_ = packaged.get_future();
        thread_ = std::thread(std::move(packaged));
    }
    ~Crosser() { join(); }
    Crosser(const Crosser&) = delete;
    Crosser& operator=(const Crosser&) = delete;

    void join() {
        if (!thread_.joinable()) return;
        constexpr auto longest = std::chrono::seconds(20);  // reached by what hangs alone
        if (done_.wait_for(longest) != std::future_status::ready) {
            std::fputs("two threads wait for each other\n", stderr);
            std::_Exit(EXIT_FAILURE);
        }
        thread_.join();
        EXPECT_NO_THROW(done_.get());
    }

private:
    std::future<void> done_;
    std::thread thread_;
};

/// Tells when a lock is taken by another thread than the one that waits for that.
class LockWatch : public LockObserver {
public:
    explicit LockWatch(std::string name) : name_(std::move(name)) { NSLock::setObserver(this); }
    ~LockWatch() override { NSLock::setObserver(nullptr); }
    LockWatch(const LockWatch&) = delete;
    LockWatch& operator=(const LockWatch&) = delete;

    void lockChanged(std::string_view name, bool held) noexcept override {
        if (held && name == name_) taken_.release();
    }
    void awaitTaken() { taken_.acquire(); }

private:
    const std::string name_;
    std::counting_semaphore<> taken_{0};
};

/// Keeps the first thread that takes a lock there, with the lock held, until it is let go on.
class LockHolder : public LockObserver {
public:
    explicit LockHolder(std::string name) : name_(std::move(name)) { NSLock::setObserver(this); }
    ~LockHolder() override { NSLock::setObserver(nullptr); }
    LockHolder(const LockHolder&) = delete;
    LockHolder& operator=(const LockHolder&) = delete;

    void lockChanged(std::string_view name, bool held) noexcept override {
        if (!held || name != name_ || kept_.exchange(true)) return;
        taken_.release();
        goOn_.acquire();
    }
    void awaitTaken() { taken_.acquire(); }
    void letGoOn() { goOn_.release(); }

private:
    const std::string name_;
    std::atomic<bool> kept_{false};
    std::binary_semaphore taken_{0};
    std::binary_semaphore goOn_{0};
};

}  // namespace nearcast::doubles
