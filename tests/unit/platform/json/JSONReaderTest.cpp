// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {
namespace {

using Dictionary = SettingValue::Dictionary;
using Array = SettingValue::Array;

std::optional<SettingValue> read(std::string_view text) { return JSONSerialization().JSONObjectWithData(text); }

TEST(JSONReader, ReadsEveryKindOfValueAndFragments) {
    const std::pair<const char*, SettingValue> cases[] = {
        {"null", nullptr},
        {"true", true},
        {"false", false},
        {"0", 0},
        {"-65", -65},
        {"0.5", 0.5},
        {"-6.5e1", -65.0},
        {"1E+2", 100.0},
        {"\"\"", ""},
        {"\"a\\\"\\\\\\/\\b\\f\\n\\r\\t\"", "a\"\\/\b\f\n\r\t"},
        {"\"\\u00e9\\u20AC\\ud83d\\uDE00\"", "é€😀"},
        {"\"é€😀\"", "é€😀"},
        {"[]", Array{}},
        {"[1,[2,{}]]", Array{1, Array{2, Dictionary{}}}},
        {"{}", Dictionary{}},
        {" \t\r\n{ \"a\" : { \"\" : null } } \n", Dictionary{{"a", Dictionary{{"", nullptr}}}}},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(read(text), value) << text;
}

TEST(JSONReader, ReadsAZeroCharacterThatIsEscaped) {
    EXPECT_EQ(read("\"a\\u0000b\""), SettingValue(std::string("a\0b", 3)));
}

TEST(JSONReader, RefusesWhatTheGrammarDoesNotKnow) {
    const char* const texts[] = {
        "",         " ",         "garbage",   "{",          "}",         "[",           "]",          "{\"a\"",
        "{\"a\":",  "{\"a\":1",  "{\"a\":1,", "{\"a\":1,}", "{,}",       "{\"a\" 1}",   "{1:2}",      "{a:1}",
        "{'a':1}",  "'a'",       "[1,]",      "[,1]",       "[1 2]",     "[1,,2]",      "nul",        "True",
        "NULL",     "NaN",       "Infinity",  "-Infinity",  "undefined", "+1",          "01",         "-01",
        "1.",       ".5",        "-.5",       "1e",         "1e+",       "0x1F",        "1_000",      "--1",
        "-",        "\"a",       "\"\\x41\"", "\"\\'\"",    "\"\\u12\"", "\"\\u12G4\"", "\"\n\"",     "\"\t\"",
        "{} {}",    "1 2",       "{}x",       "[]]",        "// c\n{}",  "{}/* c */",   "/* c */ {}", "{}# c",
        "\"\x1f\"", "{\"a\":{}",
    };
    for (const char* text : texts) EXPECT_EQ(read(text), std::nullopt) << text;
}

TEST(JSONReader, PassesOverOneByteOrderMarkAtTheStartAlone) {
    EXPECT_EQ(read("\xEF\xBB\xBF{}"), SettingValue(Dictionary{}));
    for (const char* text : {"\xEF\xBB\xBF", "\xEF\xBB{}", "\xEF", " \xEF\xBB\xBF{}", "{}\xEF\xBB\xBF",
                             "\xEF\xBB\xBF\xEF\xBB\xBF{}", "\xFF\xFE{\0}\0"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
}

TEST(JSONReader, RefusesAZeroOctetWhereverItStands) {
    for (const std::string_view text :
         {std::string_view("{}\0", 3), std::string_view("\0{}", 3), std::string_view("{\0}", 3),
          std::string_view("\"a\0b\"", 5), std::string_view("{}\0garbage", 10), std::string_view("\0", 1)}) {
        EXPECT_EQ(read(text), std::nullopt);
    }
}

TEST(JSONReader, RefusesTextThatIsNotUTF8) {
    const char* const texts[] = {
        "\"\xFF\"",
        "\"\x80\"",
        "\"\xC3\"",
        "\"\xC3(\"",
        "\"\xC0\xAF\"",
        "\"\xE0\x80\xAF\"",
        "\"\xED\xA0\x80\"",
        "\"\xF4\x90\x80\x80\"",
        "\"\xF8\x88\x80\x80\x80\"",
        "\"\xF0\x9F\x98\"",
        "{\"\xFF\":1}",
    };
    for (const char* text : texts) EXPECT_EQ(read(text), std::nullopt) << text;
}

TEST(JSONReader, RefusesLoneSurrogates) {
    for (const char* text : {"\"\\ud800\"", "\"\\udbff\"", "\"\\udc00\"", "\"\\ud800x\"", "\"\\ud800\\u0041\"",
                             "\"\\ud800\\ud800\"", "\"\\udc00\\ud800\"", "{\"\\ud800\":1}"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
}

TEST(JSONReader, KeepsIntegersOf64BitsAndReadsLargerOnesAsFloatingPoint) {
    EXPECT_EQ(read("9223372036854775807"), SettingValue(std::numeric_limits<long long>::max()));
    EXPECT_EQ(read("9223372036854775808"), SettingValue(9223372036854775808ULL));
    EXPECT_EQ(read("18446744073709551615"), SettingValue(std::numeric_limits<unsigned long long>::max()));
    EXPECT_EQ(read("-9223372036854775808"), SettingValue(std::numeric_limits<long long>::min()));
    EXPECT_EQ(read("18446744073709551616"), SettingValue(18446744073709551616.0));
    EXPECT_EQ(read("-9223372036854775809"), SettingValue(-9223372036854775809.0));
    EXPECT_EQ(read("-0"), SettingValue(0));
    EXPECT_EQ(read("1.0"), SettingValue(1.0)) << "a point makes it floating-point";
    EXPECT_EQ(read("1e2"), SettingValue(100.0));
}

TEST(JSONReader, RefusesANumberBeyondADoubleAndRoundsOneTooSmall) {
    EXPECT_EQ(read("1.7976931348623157e308"), SettingValue(std::numeric_limits<double>::max()));
    for (const char* text : {"1e309", "-1e309", "1e999999999999", "[1e999]", "1.8e308"}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
    EXPECT_EQ(read(std::string(400, '9')), std::nullopt);
    EXPECT_EQ(read("1e-999"), SettingValue(0.0));
    EXPECT_EQ(read("0e999"), SettingValue(0.0));
}

TEST(JSONReader, KeepsTheLastValueOfARepeatedKey) {
    EXPECT_EQ(read(R"({"a":1,"b":2,"a":{"c":3,"c":4}})"),
              SettingValue(Dictionary{{"a", Dictionary{{"c", 4}}}, {"b", 2}}));
    EXPECT_EQ(read(R"({"a":1,"\u0061":2})"), SettingValue(Dictionary{{"a", 2}}));
}

std::string nested(std::size_t depth, bool listsOnly) {
    std::string open;
    std::string close;
    for (std::size_t level = 0; level < depth; ++level) {
        const bool list = listsOnly || level % 2 == 0;
        open += list ? "[" : "{\"k\":";
        close.insert(0, list ? "]" : "}");
    }
    return open + "1" + close;
}

TEST(JSONReader, ReadsNestingTo512LevelsOfListsAndObjectsTogetherAndNoDeeper) {
    for (const bool listsOnly : {true, false}) {
        EXPECT_TRUE(read(nested(512, listsOnly)));
        EXPECT_FALSE(read(nested(513, listsOnly)));
    }
    EXPECT_FALSE(read(std::string(1'000'000, '[')));
    const std::string wide = "[" + nested(511, true) + "," + nested(511, true) + "]";
    EXPECT_TRUE(read(wide)) << "what lies beside does not count";
}

}  // namespace
}  // namespace nearcast
