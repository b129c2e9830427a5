// SPDX-License-Identifier: Apache-2.0
#include "support/Printable.h"

#include "support/Characters.h"

#include <gtest/gtest.h>

#include <utility>

namespace nearcast {
namespace {

constexpr const char* replaced = "\xEF\xBF\xBD";

TEST(Printable, KeepsTextOfAnyLanguage) {
    for (const char* text : {"Küche 厨房 №1", "चाय", "می\u200Cخواهم", "e\u0301", "😀", ""}) {
        EXPECT_EQ(printable(text), text);
        EXPECT_TRUE(isPrintable(text)) << text;
    }
}

TEST(Printable, ReplacesControls) {
    EXPECT_EQ(printable("a\x1b[2Jb"), std::string("a") + replaced + "[2Jb");
    EXPECT_EQ(printable("a\nb"), std::string("a") + replaced + "b");
    EXPECT_EQ(printable("\x7f"), replaced);
    EXPECT_EQ(printable("\xC2\x9B"), replaced) << "the 8-bit control sequence introducer";
    EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0") << "the first character after the controls";
}

TEST(Printable, ReplacesWhatTurnsTheDirectionOfText) {
    EXPECT_EQ(printable("\u202Egpj"), std::string(replaced) + "gpj");
    EXPECT_EQ(printable("\u2066"), replaced);
    EXPECT_EQ(printable("\u2069"), replaced);
    EXPECT_EQ(printable("\u2070"), "\u2070") << "the first character after them";
    EXPECT_EQ(printable("\u2027"), "\u2027") << "the last one before the separators";
    EXPECT_EQ(printable("\u2028"), replaced);
}

TEST(Printable, ReplacesEachOctetThatIsNotUTF8) {
    EXPECT_EQ(printable("\xFF\xC3"), std::string(replaced) + replaced);
    EXPECT_EQ(printable("\xE2\x82"), std::string(replaced) + replaced) << "a character cut short";
    EXPECT_FALSE(isPrintable("plain and \xFF"));
}

TEST(Printable, WhatItMadeIsPrintable) {
    std::string all;
    for (int octet = 0; octet < 256; ++octet) all += std::string("\xC2\xE2\x80") + static_cast<char>(octet);
    EXPECT_FALSE(isPrintable(all));
    EXPECT_TRUE(isPrintable(printable(all)));
}

TEST(PrintableJSON, WritesWhatWouldSteerATerminalAsEscapes) {
    EXPECT_EQ(printableJSON("\"\x7f\xC2\x80\xC2\x9F\xC2\xA0\""), "\"\\u007f\\u0080\\u009f\xC2\xA0\"");
    EXPECT_EQ(printableJSON("\"\u202E\""), "\"\\u202e\"");
    EXPECT_EQ(printableJSON("\"\U000E0001\""), "\"\\udb40\\udc01\"") << "beyond the first 65536: two units of UTF-16";
}

TEST(PrintableJSON, LeavesTheRestAsItIs) {
    const std::string json = "{\n\t\"Küche\": \"厨房 \\u001b\"\r\n}";
    EXPECT_EQ(printableJSON(json), json);
}

TEST(Width, OfACharacterIsThatOfATerminal) {
    const std::pair<const char*, std::size_t> cases[] = {
        {"", 0},  {"abc", 3},    {"é", 1},      {"e\u0301", 1}, {"厨房", 4}, {"\uAC00", 2}, {"\u1112\u1161\u11AB", 2},
        {"😀", 2}, {"\uFF21", 2}, {"\uFF71", 1}, {"\xFF", 1},    {"№", 1},    {"\u200C", 0}, {"चाय", 3},
    };
    for (const auto& [text, width] : cases) EXPECT_EQ(widthOf(text), width) << text;
}

TEST(Width, ChangesWhereTheTablesSay) {
    EXPECT_EQ(terminalColumns(0x2FF), 1U);
    EXPECT_EQ(terminalColumns(0x300), 0U);
    EXPECT_EQ(terminalColumns(0x36F), 0U);
    EXPECT_EQ(terminalColumns(0x370), 1U);
    EXPECT_EQ(terminalColumns(0x10FF), 1U);
    EXPECT_EQ(terminalColumns(0x1100), 2U);
    EXPECT_EQ(terminalColumns(0x115F), 2U);
    EXPECT_EQ(terminalColumns(0x1160), 0U);
    EXPECT_EQ(terminalColumns(0x3FFFF), 1U);
}

}  // namespace
}  // namespace nearcast
