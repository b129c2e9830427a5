// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManualPace.h"

#include <gtest/gtest.h>

#include <thread>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

TEST(ManualPace, LetsThroughWhatItHasReached) {
    ManualPace pace;
    pace.set(5us);
    EXPECT_EQ(pace.reached(), 5us);
    EXPECT_TRUE(pace.waitUntil(4us));
    EXPECT_TRUE(pace.waitUntil(5us));
}

TEST(ManualPace, HoldsWhatItHasNotReached) {
    ManualPace pace;
    bool come = false;
    std::thread driver([&] { come = pace.waitUntil(5us); });
    pace.awaitWaiting(5us);
    pace.set(4us);
    pace.awaitWaiting(5us);
    pace.set(5us);
    driver.join();
    EXPECT_TRUE(come);
}

TEST(ManualPace, EndsTheNextWaitWhenItIsWoken) {
    ManualPace pace;
    int hooked = 0;
    pace.onNextWake([&] { ++hooked; });
    pace.wake();
    pace.wake();
    EXPECT_EQ(hooked, 1);
    EXPECT_FALSE(pace.waitUntil(1us));
    pace.set(1us);
    EXPECT_TRUE(pace.waitUntil(1us));
}

}  // namespace

}  // namespace nearcast
