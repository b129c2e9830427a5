// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/BackOff.h"

#include <gtest/gtest.h>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

TEST(BackOff, DoublesUpToTheLongestPause) {
    BackOff pause(250ms, 1500ms);
    for (const auto expected : {250ms, 500ms, 1000ms, 1500ms, 1500ms}) EXPECT_EQ(pause.next(), expected);
}

TEST(BackOff, StartsAgainWithTheFirstPause) {
    BackOff pause(250ms, 2s);
    pause.next();
    pause.next();
    pause.reset();
    EXPECT_EQ(pause.next(), 250ms);
}

TEST(TakeEarlier, PrefersAnyMomentToNone) {
    std::optional<Time> earliest;
    takeEarlier(earliest, std::nullopt);
    EXPECT_FALSE(earliest);
    takeEarlier(earliest, 5s);
    takeEarlier(earliest, 7s);
    takeEarlier(earliest, std::nullopt);
    EXPECT_EQ(earliest, 5s);
    takeEarlier(earliest, 3s);
    EXPECT_EQ(earliest, 3s);
}

TEST(QuietWatch, ExpectsNothingWithoutAScan) {
    QuietWatch watch;
    EXPECT_FALSE(watch.due());
    EXPECT_FALSE(watch.rings(1h));
    watch.scan(true, 0s);
    watch.scan(false, 1s);
    EXPECT_FALSE(watch.due());
    EXPECT_FALSE(watch.rings(1h));
}

TEST(QuietWatch, RingsWhenAScanHasBroughtNothingForThirtySeconds) {
    QuietWatch watch;
    watch.scan(true, 100s);
    EXPECT_EQ(watch.due(), 130s);
    EXPECT_FALSE(watch.rings(130s - 1ns));
    EXPECT_FALSE(watch.quiet());
    EXPECT_TRUE(watch.rings(130s));
    EXPECT_TRUE(watch.quiet());
}

TEST(QuietWatch, CountsFromTheLastReport) {
    QuietWatch watch;
    watch.scan(true, 100s);
    watch.heard(120s);
    watch.scan(true, 125s);
    EXPECT_FALSE(watch.rings(150s - 1ns));
    EXPECT_TRUE(watch.rings(150s));
}

TEST(QuietWatch, RingsLessAndLessOftenUpToEveryEightMinutes) {
    QuietWatch watch;
    watch.scan(true, 0s);
    Time at = 0s;
    for (const auto limit : {30s, 60s, 120s, 240s, 480s, 480s}) {
        at += limit;
        EXPECT_FALSE(watch.rings(at - 1ns));
        EXPECT_TRUE(watch.rings(at));
    }
}

TEST(QuietWatch, BeginsAnewWhenSomethingIsHeard) {
    QuietWatch watch;
    watch.scan(true, 0s);
    EXPECT_TRUE(watch.rings(30s));
    watch.heard(40s);
    EXPECT_FALSE(watch.quiet());
    EXPECT_EQ(watch.due(), 70s);
}

TEST(QuietWatch, BeginsAnewWithAnotherScan) {
    QuietWatch watch;
    watch.scan(true, 0s);
    EXPECT_TRUE(watch.rings(30s));
    watch.scan(false, 40s);
    EXPECT_FALSE(watch.quiet());
    watch.scan(true, 50s);
    EXPECT_EQ(watch.due(), 80s);
}

}  // namespace

}  // namespace nearcast
