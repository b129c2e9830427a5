// SPDX-License-Identifier: Apache-2.0
#include "support/Utf8.h"

#include <gtest/gtest.h>

#include <string_view>

namespace nearcast {
namespace {

TEST(Utf8, ACharacterIsAsLongAsItsWellFormedSequenceAndElseOneOctet) {
    const std::pair<std::string_view, std::size_t> cases[] = {
        {"a", 1},
        {"\x7f", 1},
        {"é!", 2},
        {"€!", 3},
        {"😀!", 4},
        {"\xC2\x80", 2},          // the first of two octets
        {"\xC1\xBF", 1},          // overlong
        {"\xE0\xA0\x80", 3},      // the first of three
        {"\xE0\x9F\xBF", 1},      // overlong
        {"\xED\x9F\xBF", 3},      // the last before the surrogates
        {"\xED\xA0\x80", 1},      // a surrogate
        {"\xEE\x80\x80", 3},      // the first after them
        {"\xF0\x90\x80\x80", 4},  // the first of four
        {"\xF0\x8F\xBF\xBF", 1},  // overlong
        {"\xF4\x8F\xBF\xBF", 4},  // the last of all
        {"\xF4\x90\x80\x80", 1},  // beyond
        {"\xF5\x80\x80\x80", 1},  // no such first octet
        {"\x80", 1},              // a lone continuation
        {"\xC3", 1},              // cut off
        {"\xE2\x82", 1},
        {"\xF0\x9F\x98", 1},
        {"\xE2\x82!", 1},
        {"\xF0\x9F\x98!", 1},
        {"\xC3(", 1},
    };
    for (const auto& [text, length] : cases) EXPECT_EQ(characterLength(text), length) << text;
}

TEST(Utf8, CutsCharactersAndNeverInsideOne) {
    EXPECT_EQ(characters("aé€😀z", 0, 2), "aé");
    EXPECT_EQ(characters("aé€😀z", 1, 3), "é€😀");
    EXPECT_EQ(characters("aé€😀z", 4, 1), "z");
    EXPECT_EQ(characters("aé€😀z", 3, 9), "😀z");
    EXPECT_EQ(characters("aé€😀z", 5, 1), "");
    EXPECT_EQ(characters("aé€😀z", 9, 1), "");
    EXPECT_EQ(characters("", 0, 1), "");
    EXPECT_EQ(characters("abc", 1, 0), "");
    EXPECT_EQ(characters("\xFF\xC3(", 1, 1), "\xC3");
}

TEST(Utf8, CountsCharacters) {
    EXPECT_TRUE(hasCharacters("aé€😀z", 5));
    EXPECT_FALSE(hasCharacters("aé€😀z", 6));
    EXPECT_TRUE(hasCharacters("", 0));
    EXPECT_FALSE(hasCharacters("", 1));
    EXPECT_TRUE(hasCharacters("\xFF\xFF", 2));
    EXPECT_FALSE(hasCharacters("😀", 2));
}

TEST(Utf8, ReplacesWhatIsNoneOctetByOctet) {
    const struct {
        const char* text;
        const char* wellFormed;
    } cases[] = {
        {"", ""},
        {"plain", "plain"},
        {"Küche", "Küche"},
        {"€ 😀", "€ 😀"},
        {"a\xFFz", "a\xEF\xBF\xBDz"},
        {"\xC3", "\xEF\xBF\xBD"},
        {"\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& one : cases) EXPECT_EQ(wellFormed(one.text), one.wellFormed);
    EXPECT_EQ(wellFormed(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

}  // namespace
}  // namespace nearcast
