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

}  // namespace
}  // namespace nearcast::cli
