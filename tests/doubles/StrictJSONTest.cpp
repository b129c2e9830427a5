// SPDX-License-Identifier: Apache-2.0
#include "doubles/StrictJSON.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast::doubles {
namespace {

TEST(StrictJSON, ReadsEveryKindOfValue) {
    const auto value = readStrictJSON(" {\"a\" : [1, -2.5e1, true, false, null, \"\\u00e9\\n\"] , \"b\":{}} ");
    ASSERT_TRUE(value);
    EXPECT_EQ(*value,
              nlohmann::json({{"a", {1, -25.0, true, false, nullptr, "é\n"}}, {"b", nlohmann::json::object()}}));
}

TEST(StrictJSON, RefusesWhatIsNoJSON) {
    for (const char* text : {"",
                             " ",
                             "{",
                             "[1,]",
                             "{\"a\":1,}",
                             "01",
                             "1.",
                             "+1",
                             "'a'",
                             "nul",
                             "\"\t\"",
                             "\"\\x\"",
                             "\"\\ud800\"",
                             "\"\\udc00\"",
                             "\"\xff\"",
                             "\"\xc0\xaf\"",
                             "\"\xed\xa0\x80\"",
                             "1e999",
                             "{} {}",
                             "\"\\u00g0\"",
                             "\"\\u\x10\x10\x10\x10\""}) {
        EXPECT_FALSE(readStrictJSON(text)) << text;
    }
}

TEST(StrictJSON, KeepsTheLastOfARepeatedKeyAndIntegersOf64Bits) {
    EXPECT_EQ(readStrictJSON("{\"a\":1,\"a\":2}")->dump(), "{\"a\":2}");
    EXPECT_EQ(readStrictJSON("18446744073709551615")->dump(), "18446744073709551615");
    EXPECT_EQ(readStrictJSON("-9223372036854775808")->dump(), "-9223372036854775808");
    EXPECT_TRUE(readStrictJSON("18446744073709551616")->is_number_float());
}

TEST(StrictJSON, ReadsNestingTo512LevelsAndNoDeeper) {
    EXPECT_TRUE(readStrictJSON(std::string(512, '[') + std::string(512, ']')));
    EXPECT_FALSE(readStrictJSON(std::string(513, '[') + std::string(513, ']')));
}

}  // namespace
}  // namespace nearcast::doubles
