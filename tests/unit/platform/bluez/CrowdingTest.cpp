// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Crowding.h"

#include <gtest/gtest.h>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

constexpr Time start = 1h;

/// A turn that takes a single message, and another one so much later, with so many.
Crowding afterTwoTurns(Time interval, int messages) {
    Crowding crowding;
    crowding.turn(start);
    crowding.taken(1, false);
    crowding.turn(start + interval);
    crowding.taken(messages, false);
    return crowding;
}

TEST(Crowding, DoesNotMakeASingleMessageWait) {
    const Crowding crowding = afterTwoTurns(1s, 1);
    EXPECT_FALSE(crowding.pausing());
    EXPECT_FALSE(crowding.crowded());
}

TEST(Crowding, PausesAfterTwoMessagesAtOnce) {
    const Crowding crowding = afterTwoTurns(1s, 2);
    EXPECT_TRUE(crowding.pausing());
    EXPECT_TRUE(crowding.crowded());
}

TEST(Crowding, PausesWhereTurnsFollowSoonerThanAPauseTakes) {
    EXPECT_TRUE(afterTwoTurns(Crowding::interval - 1ns, 1).pausing());
}

TEST(Crowding, DoesNotPauseWhereTurnsFollowAsSlowlyAsPausesWould) {
    EXPECT_FALSE(afterTwoTurns(Crowding::interval, 1).pausing());
}

TEST(Crowding, TakesAllInATurnThatFollowsClosely) {
    Crowding crowding = afterTwoTurns(1s, 1);
    crowding.turn(start + 1s + 1ms);
    EXPECT_TRUE(crowding.crowded());
}

TEST(Crowding, TakesAllInTheTurnAfterTwoMessages) {
    Crowding crowding = afterTwoTurns(1s, 2);
    crowding.turn(start + 3s);
    EXPECT_TRUE(crowding.crowded());
}

/// A flood, and after so long two messages at once.
bool pausesSoLongAfterAFlood(Time interval) {
    Crowding crowding;
    crowding.turn(start);
    crowding.taken(64, true);
    crowding.turn(start + interval);
    crowding.taken(2, false);
    return crowding.pausing();
}

TEST(Crowding, DoesNotPauseWithinASecondAfterAFlood) {
    EXPECT_FALSE(pausesSoLongAfterAFlood(0s));
    EXPECT_FALSE(pausesSoLongAfterAFlood(1s - 1ns));
}

TEST(Crowding, PausesAgainASecondAfterAFlood) { EXPECT_TRUE(pausesSoLongAfterAFlood(1s)); }

}  // namespace

}  // namespace nearcast::bluez
