// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace nearcast {
namespace {

using Dictionary = SettingValue::Dictionary;
using Array = SettingValue::Array;
using Bytes = SettingValue::Bytes;

const JSONSerialization JSON;

TEST(JSONWriter, IndentsWhatItWrites) {
    EXPECT_EQ(JSON.dataWithJSONObject(Dictionary{{"a", Dictionary{{"n", 1}}}}), "{\n  \"a\": {\n    \"n\": 1\n  }\n}");
    EXPECT_EQ(JSON.dataWithJSONObject(Dictionary{}), "{}");
}

TEST(JSONWriter, GivesBackEveryValueThatItWrote) {
    const SettingValue values[] = {
        Dictionary{{"null", nullptr}, {"yes", true}, {"no", false}},
        Dictionary{{"i", std::numeric_limits<long long>::min()}, {"u", std::numeric_limits<unsigned long long>::max()}},
        Dictionary{
            {"tenth", 0.1}, {"whole", 2.0}, {"huge", 1.7976931348623157e308}, {"tiny", 5e-324}, {"third", 1.0 / 3}},
        Dictionary{{"\n\"\\\x01é😀", std::string("\0x", 2)}},
        Array{Array{}, Dictionary{}, Array{1, 2.5, "x"}},
    };
    for (const SettingValue& value : values) {
        const std::string data = JSON.dataWithJSONObject(value);
        EXPECT_EQ(JSON.JSONObjectWithData(data), value) << data;
        EXPECT_EQ(JSON.JSONObjectWithData(JSONSerialization::compact(value)), value);
    }
}

TEST(JSONWriter, KeepsTheSignOfZero) {
    const auto back = JSON.JSONObjectWithData(JSON.dataWithJSONObject(Array{-0.0}));
    EXPECT_TRUE(std::signbit(*back->as<Array>()->front().as<double>()));
}

TEST(JSONWriter, RefusesBytesNumbersThatAreNotFiniteAndTextThatIsNotUTF8) {
    const SettingValue bad[] = {Bytes{},
                                std::nan(""),
                                std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity(),
                                "\xFF",
                                "\xC0\xAF",
                                "\xED\xA0\x80",
                                "a\xE2\x82",
                                Dictionary{{"\x80", 1}}};
    for (const SettingValue& value : bad) {
        EXPECT_FALSE(JSON.isValidJSONObject(Dictionary{{"k", value}}));
        EXPECT_FALSE(JSON.isValidJSONObject(Array{1, Array{value}}));
    }
    EXPECT_TRUE(JSON.isValidJSONObject(Dictionary{{"é", Array{nullptr, true, 1, 0.5, "😀", std::string("\0", 1)}}}));
}

SettingValue nested(int depth) {
    SettingValue value = 1;
    for (int level = 0; level < depth; ++level) {
        value =
            level % 2 == 0 ? SettingValue(Array{std::move(value)}) : SettingValue(Dictionary{{"k", std::move(value)}});
    }
    return value;
}

TEST(JSONWriter, RefusesWhatTheReaderWouldRefuseAsTooDeep) {
    EXPECT_TRUE(JSON.isValidJSONObject(nested(512)));
    EXPECT_TRUE(JSON.JSONObjectWithData(JSON.dataWithJSONObject(nested(512))));
    EXPECT_FALSE(JSON.isValidJSONObject(nested(513)));
    EXPECT_FALSE(JSON.isValidJSONObject(nested(2000)));
}

TEST(JSONWriter, DescribesForPeopleWhatItCannotWrite) {
    EXPECT_EQ(JSON.description(Dictionary{{"b", Bytes{std::byte{0xDE}, std::byte{0x01}}}}), R"({"b":"<de01>"})");
    EXPECT_EQ(JSON.description(Array{std::nan(""), std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity()}),
              R"(["nan","inf","-inf"])");
    EXPECT_EQ(JSON.description(Array{"a\xFF"}), "[\"a\xEF\xBF\xBD\"]");
    EXPECT_EQ(JSON.description(nullptr), "null");
}

TEST(JSONWriter, KeepsTheTextOfASavedRegistryAsItIs) {
    EXPECT_EQ(JSON.dataWithJSONObject(Array{"\x7f\xC2\x9B"}), "[\n  \"\x7f\xC2\x9B\"\n]");
    EXPECT_EQ(JSON.description(Array{"\x7f\xC2\x9B"}), "[\"\x7f\xC2\x9B\"]");
}

TEST(JSONWriter, QuotesText) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "\"\""},
        {"plain", "\"plain\""},
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"\n\t\x01\x7f", "\"\\n\\t\\u0001\\u007f\""},
        {"\xC2\x9B\xC2\xA0\u202E", "\"\\u009b\xC2\xA0\\u202e\""},
        {"é😀", "\"é😀\""},
        {std::string("\0", 1), "\"\\u0000\""},
        {"\xFFx", "\"\xEF\xBF\xBDx\""},
    };
    for (const auto& [text, quoted] : cases) {
        std::string out = "> ";
        appendQuoted(out, text);
        EXPECT_EQ(out, "> " + quoted);
    }
}

}  // namespace
}  // namespace nearcast
