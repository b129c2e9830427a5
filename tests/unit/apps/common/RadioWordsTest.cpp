// SPDX-License-Identifier: Apache-2.0
#include "common/RadioWords.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

RadioHealth hearing() {
    RadioHealth health;
    health.state = CBManagerStatePoweredOn;
    health.since = 100;
    health.reportsPerSecond = 31.24;
    health.lastReportAge = 0.04;
    return health;
}

TEST(RadioWords, TellWhatTheRadioHears) {
    EXPECT_EQ(healthInWords(hearing(), 112.5), "powered on for 12.5 s, 31.2 reports/s, last 0.0 s ago, 0 restarts");
}

TEST(RadioWords, TellWhyTheRadioIsBlind) {
    RadioHealth health;
    health.state = CBManagerStatePoweredOff;
    health.why = "blocked by rfkill";
    health.restarts = 1;
    EXPECT_EQ(healthInWords(health, 3),
              "powered off for 3.0 s, 0.0 reports/s, nothing heard yet, 1 restart: blocked by rfkill");
}

TEST(RadioWords, AStateOfTheFutureIsItsNumber) { EXPECT_EQ(stateName(static_cast<CBManagerState>(17)), "17"); }

TEST(RadioWords, WhatIsHeardMakesNoDifferenceButStateReasonAndRestartsDo) {
    RadioHealth other = hearing();
    other.reportsPerSecond = 2;
    other.lastReportAge = 4;
    EXPECT_FALSE(differs(hearing(), other));
    other.restarts = 1;
    EXPECT_TRUE(differs(hearing(), other));
    other = hearing();
    other.why = "just so";
    EXPECT_TRUE(differs(hearing(), other));
    other = hearing();
    other.state = CBManagerStateUnknown;
    EXPECT_TRUE(differs(hearing(), other));
}

}  // namespace
}  // namespace nearcast::cli
