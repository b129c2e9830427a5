// SPDX-License-Identifier: Apache-2.0
#include "doubles/KeptLines.h"
#include "doubles/ThreadedPlatform.h"
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <semaphore>
#include <thread>

namespace nearcast::doubles {
namespace {

using namespace std::chrono_literals;

TEST(ThreadedPlatform, FiresTimersOnAThreadOfTheirOwnAsTimeIsGiven) {
    KeptLines console;
    const JSONSerialization JSON;
    ThreadedPlatform platform(console, JSON);
    std::binary_semaphore fired(0);
    std::thread::id thread;
    const auto timer = platform.scheduledTimer(5s, [&](NSTimer&) {
        thread = std::this_thread::get_id();
        fired.release();
    });
    // Each firing is awaited before more time is given, for missed ones come once.
    for (int times = 0; times < 2; ++times) {
        platform.give(5s);
        fired.acquire();
    }
    timer->invalidate();
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(ThreadedPlatform, LetsSleepersWaitUntilTheirTimeWasGiven) {
    KeptLines console;
    const JSONSerialization JSON;
    ThreadedPlatform platform(console, JSON);
    std::atomic<bool> awake{false};
    std::thread giver([&] {
        while (!awake) platform.give(100ms);
    });
    platform.usleep(500ms);
    awake = true;
    giver.join();
    EXPECT_GE(platform.date().sinceStart(), 500ms);
}

}  // namespace
}  // namespace nearcast::doubles
