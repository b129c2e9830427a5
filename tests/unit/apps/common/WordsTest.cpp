// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

TEST(Column, IsFilledToItsWidthInCharacters) { EXPECT_EQ(column("Küche", 7), "Küche  "); }

TEST(Column, IsCutBetweenCharacters) { EXPECT_EQ(column("ééé", 2), "éé"); }

TEST(Column, HoldsHalfAsManyWideCharacters) {
    EXPECT_EQ(column("厨房打印机", 6), "厨房打");
    EXPECT_EQ(column("厨房打印机", 5), "厨房 ") << "none is cut in half";
    EXPECT_EQ(column("厨房", 6), "厨房  ");
}

TEST(Column, TakesAnAccentWithItsLetter) { EXPECT_EQ(column("e\u0301e\u0301", 1), "e\u0301"); }

TEST(Column, KeepsItsWidthWhateverTheTextHolds) {
    for (const char* text : {"\u202Eabc", "\x1b[9Cabc", "\t", "😀\u200D😀", "\xFF\xFF", "a\u0300\u0301\u0302"}) {
        EXPECT_EQ(widthOf(column(text, 10)), 10U) << text;
    }
}

TEST(Column, OfItsExactWidthStaysAsItIs) { EXPECT_EQ(column("abc", 3), "abc"); }

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

TEST(Words, CountOneThingAndMore) {
    EXPECT_EQ(counted(1, "dongle"), "1 dongle");
    EXPECT_EQ(counted(0, "dongle"), "0 dongles");
    EXPECT_EQ(counted(2, "dongle"), "2 dongles");
}

}  // namespace
}  // namespace nearcast::cli
