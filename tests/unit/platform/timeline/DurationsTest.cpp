// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/timeline/TimelineFixture.h"

#include "platform/Drive.h"

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

namespace nearcast {

namespace {

using Time = Timeline::Time;

/// Times of every size and sign, the ends of each range among them.
std::vector<Time> anyTimes() {
    std::vector<Time> times = {Time::min(), -1s, -1us, 0us, 1us, 2us, Timeline::forever, Timeline::forever + 1us,
                               Time::max()};
    std::mt19937_64 random(1);
    for (int count = 0; count < 1000; ++count) {
        const auto bits = std::uniform_int_distribution<int>(1, 63)(random);
        times.emplace_back(static_cast<Time::rep>(random() >> static_cast<unsigned>(64 - bits)));
    }
    return times;
}

TEST_F(TimelineTest, ARunForAnyTimeEndsThereAndNowhereElse) {
    for (const Time time : anyTimes()) {
        Timeline own(console);
        ASSERT_EQ(own.runUntil(time), Timeline::End::reached) << time.count();
        ASSERT_EQ(own.now(), std::clamp(time, Time(0), Timeline::forever)) << time.count();
    }
}

TEST_F(TimelineTest, ASleepOfAnyLengthEndsAndNeverGoesBack) {
    for (const Time time : anyTimes()) {
        Timeline own(console);
        own.runUntil(3us);
        own.sleep(time);
        const Time passed = std::clamp(time, 0us, Timeline::forever - 3us);
        ASSERT_EQ(own.now(), 3us + passed) << time.count();
    }
}

TEST_F(TimelineTest, ATimerOfAnyIntervalLetsARunEnd) {
    for (const Time time : anyTimes()) {
        int fired = 0;
        const auto own = std::make_shared<Timeline>(console);
        const auto interval =
            time > 0us && time < 1h ? std::chrono::nanoseconds(time) : std::chrono::nanoseconds(time.count());
        const auto timer = own->scheduledTimer(interval, [&](NSTimer& one) {
            if (++fired == 3) one.invalidate();
        });
        ASSERT_EQ(own->runUntil(10s), Timeline::End::reached) << time.count();
        ASSERT_EQ(own->now(), 10s);
    }
}

TEST(RunTime, IsRoundedToMicrosecondsButForLessThanOne) {
    EXPECT_EQ(runTime(1.0000004), 1'000'000us);
    EXPECT_EQ(runTime(1.0000006), 1'000'001us);
    EXPECT_EQ(runTime(1.4e-6), 1us);
    EXPECT_EQ(runTime(1e-7), 1us);
    EXPECT_EQ(runTime(std::numeric_limits<double>::denorm_min()), 1us);
}

TEST(RunTime, IsNoneForWhatIsNoTime) {
    for (const double seconds :
         {0.0, -0.0, -1e-9, -1.0, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(runTime(seconds), 0us) << seconds;
    }
}

TEST(RunTime, HasAnEnd) {
    EXPECT_EQ(runTime(1e9), 1'000'000'000s);
    EXPECT_EQ(runTime(1e9 + 1), 1'000'000'000s);
    EXPECT_EQ(runTime(std::numeric_limits<double>::infinity()), 1'000'000'000s);
}

}  // namespace

}  // namespace nearcast
