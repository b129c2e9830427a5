// SPDX-License-Identifier: Apache-2.0
#include "platform/system/RealPace.h"

#include "doubles/MadeDescriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

/// Machine time that `action` takes.
template <class Action>
SystemClock::Time timeOf(Action action) {
    const auto before = SystemClock::now();
    action();
    return SystemClock::now() - before;
}

TEST(RealPace, RefusesASpeedThatIsNone) {
    for (const double speed : {0.0, -1.0, std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_THROW(RealPace pace(speed), std::invalid_argument) << speed;
    }
}

TEST(RealPace, LetsNothingThroughEarly) {
    RealPace pace(1);
    EXPECT_GE(timeOf([&] { EXPECT_TRUE(pace.waitUntil(2ms)); }), 2ms);
}

TEST(RealPace, GoesSoManyTimesAsFast) {
    RealPace pace(1e6);
    const auto passed = timeOf([&] { EXPECT_TRUE(pace.waitUntil(2000s)); });
    EXPECT_GE(passed, 2ms);
    EXPECT_LT(passed, 1000s);
}

TEST(RealPace, GoesSoManyTimesAsSlowly) {
    RealPace pace(0.01);
    EXPECT_GE(timeOf([&] { EXPECT_TRUE(pace.waitUntil(20us)); }), 2ms);
}

TEST(RealPace, CountsFromItsFirstWait) {
    RealPace pace(1);
    EXPECT_EQ(pace.reached(), std::nullopt);
    SystemClock::sleepUntil(SystemClock::now() + 2ms);
    EXPECT_GE(timeOf([&] { EXPECT_TRUE(pace.waitUntil(2ms)); }), 2ms);
    EXPECT_GE(pace.reached(), 2ms);
    // On time again at once after a stall: the moments that were missed do not shift those that come.
    SystemClock::sleepUntil(SystemClock::now() + 2ms);
    EXPECT_TRUE(pace.waitUntil(3ms));
    EXPECT_TRUE(pace.waitUntil(4ms));
    EXPECT_GE(pace.reached(), 4ms);
}

TEST(RealPace, NeverGoesBack) {
    RealPace pace(7);
    pace.waitUntil(0us);
    auto last = pace.reached();
    for (int reading = 0; reading < 1000; ++reading) {
        const auto next = pace.reached();
        ASSERT_GE(next, last);
        last = next;
    }
}

TEST(RealPace, IsWokenByAnotherThread) {
    RealPace pace(1);
    std::thread other([&] { pace.wake(); });
    EXPECT_FALSE(pace.waitUntil(1h));
    other.join();
}

TEST(RealPace, KeepsAWakeForTheNextWait) {
    RealPace pace(1);
    pace.wake();
    EXPECT_FALSE(pace.waitUntil(1h));
}

/// What woke it may come before the moment, also when that has come.
TEST(RealPace, TellsOfAWakeAlsoWhenTheMomentHasCome) {
    RealPace pace(1);
    pace.wake();
    EXPECT_FALSE(pace.waitUntil(0us));
    EXPECT_TRUE(pace.waitUntil(0us));
}

TEST(RealPace, BearsTheEndsOfItsRange) {
    RealPace slow(std::numeric_limits<double>::denorm_min());
    RealPace fast(std::numeric_limits<double>::max());
    slow.wake();
    EXPECT_FALSE(slow.waitUntil(1us));
    EXPECT_EQ(slow.reached(), 0us);
    EXPECT_TRUE(fast.waitUntil(Timeline::forever));
    EXPECT_GT(fast.reached(), 1h);
    RealPace pace(1);
    pace.wake();
    EXPECT_FALSE(pace.waitUntil(Timeline::forever));
}

TEST(RealPace, CannotWaitOnceItsDescriptorsWereClosed) {
    const MadeDescriptors made;
    RealPace pace(1);
    EXPECT_TRUE(pace.waitUntil(1us));
    made.closeAll();
    EXPECT_THROW(pace.waitUntil(1h), std::system_error);
}

/// The next file that is opened gets the number of one that was closed. This one is always readable.
TEST(RealPace, CannotWaitOnceItsDescriptorsAreAnothersFiles) {
    const MadeDescriptors made;
    RealPace pace(1);
    made.closeAll();
    const int first = open("/dev/null", O_RDONLY);
    const int second = open("/dev/null", O_RDONLY);
    EXPECT_THROW(pace.waitUntil(1h), std::system_error);
    close(first);
    close(second);
}

}  // namespace

}  // namespace nearcast
