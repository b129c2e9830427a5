// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

constexpr const char* replaced = "\xEF\xBF\xBD";

TEST(Printable, KeepsTextOfAnyLanguage) { EXPECT_EQ(printable("Küche 厨房 №1"), "Küche 厨房 №1"); }

TEST(Printable, ReplacesWhatCouldSteerATerminal) {
    EXPECT_EQ(printable("a\x1b[2Jb"), std::string("a") + replaced + "[2Jb");
    EXPECT_EQ(printable("a\nb"), std::string("a") + replaced + "b");
    EXPECT_EQ(printable("\x7f"), replaced);
    EXPECT_EQ(printable("\xC2\x9B"), replaced) << "the 8-bit control sequence introducer";
    EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0") << "the first character after the controls";
}

TEST(Printable, ReplacesEachOctetThatIsNotUTF8) {
    EXPECT_EQ(printable("\xFF\xC3"), std::string(replaced) + replaced);
    EXPECT_EQ(printable("\xE2\x82"), std::string(replaced) + replaced) << "a character cut short";
}

TEST(Column, IsFilledToItsWidthInCharacters) { EXPECT_EQ(column("Küche", 7), "Küche  "); }

TEST(Column, IsCutBetweenCharacters) { EXPECT_EQ(column("ééé", 2), "éé"); }

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

TEST(RadioWords, AStateOfTheFutureIsItsNumber) { EXPECT_EQ(stateName(static_cast<CBManagerState>(17)), "17"); }

TEST(Words, CountOneThingAndMore) {
    EXPECT_EQ(counted(1, "dongle"), "1 dongle");
    EXPECT_EQ(counted(0, "dongle"), "0 dongles");
    EXPECT_EQ(counted(2, "dongle"), "2 dongles");
}

}  // namespace
}  // namespace nearcast::cli
