// SPDX-License-Identifier: Apache-2.0
#include "platform/system/SystemClock.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <thread>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

TEST(SystemClock, NeverGoesBack) {
    auto last = SystemClock::now();
    for (int reading = 0; reading < 1000; ++reading) {
        const auto next = SystemClock::now();
        ASSERT_GE(next, last);
        last = next;
    }
}

TEST(SystemClock, CountsSinceTheMachineStarted) {
    timespec before{};
    ASSERT_EQ(clock_gettime(CLOCK_BOOTTIME, &before), 0);
    const auto now = SystemClock::now();
    EXPECT_GE(now, std::chrono::seconds(before.tv_sec) + std::chrono::nanoseconds(before.tv_nsec));
}

TEST(SystemClock, SleepsUntilTheMoment) {
    const auto moment = SystemClock::now() + 3ms;
    SystemClock::sleepUntil(moment);
    EXPECT_GE(SystemClock::now(), moment);
}

TEST(SystemClock, DoesNotSleepUntilAMomentThatHasPassed) {
    SystemClock::sleepUntil(SystemClock::now());
    SystemClock::sleepUntil(0ns);
    SystemClock::sleepUntil(-1h);
}

TEST(SystemClock, SleepsOnWhenASignalComes) {
    std::signal(SIGUSR1, [](int) {});
    std::atomic<bool> slept{false};
    SystemClock::Time moment{};
    SystemClock::Time woken{};
    std::thread sleeper([&] {
        moment = SystemClock::now() + 5ms;
        SystemClock::sleepUntil(moment);
        woken = SystemClock::now();
        slept = true;
    });
    while (!slept) pthread_kill(sleeper.native_handle(), SIGUSR1);
    sleeper.join();
    EXPECT_GE(woken, moment);
}

}  // namespace

}  // namespace nearcast
