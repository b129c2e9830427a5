// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace nearcast {
namespace {

std::string saidOf(std::string_view text) {
    const auto parsed = JSONSerialization::parse(text);
    const auto* problem = std::get_if<JSONProblem>(&parsed);
    return problem == nullptr ? "JSON" : notJSON(placeOf(text, problem->offset), problem->text);
}

struct Broken {
    std::string_view text;
    const char* place;
    const char* why;
};

using namespace std::string_view_literals;

const Broken texts[] = {
    {"", "line 1, column 1", "there is no text"},
    {" \n\t ", "line 1, column 1", "there is no text"},
    {"\xEF\xBB\xBF", "line 1, column 1", "there is no text"},
    {"\xEF\xBB\xBF\n", "line 1, column 1", "there is no text"},
    {"{", "line 1, column 2", "it breaks off here"},
    {"{\n  \"a\": 1\n\n", "line 2, column 9", "it breaks off here"},
    {"[1,\r\n", "line 1, column 4", "it breaks off here"},
    {"\"ab", "line 1, column 4", "it breaks off here"},
    {"tru", "line 1, column 4", "it breaks off here"},
    {"-", "line 1, column 2", "it breaks off here"},
    {"{\"a\": oops}", "line 1, column 7", "'o' is not expected here"},
    {"{\n  \"a\": oops\n}", "line 2, column 8", "'o' is not expected here"},
    {"[1,]", "line 1, column 4", "']' is not expected here"},
    {"{\"a\": 1,}", "line 1, column 9", "'}' is not expected here"},
    {"{'a': 1}", "line 1, column 2", "''' is not expected here"},
    {"{\"a\" 12345}", "line 1, column 6", "'1' is not expected here"},
    {"{\"a\": 1 \"bc\": 2}", "line 1, column 9", "'\"' is not expected here"},
    {"{\"a\": 1 false}", "line 1, column 9", "'f' is not expected here"},
    {"[true null]", "line 1, column 7", "'n' is not expected here"},
    {"{true:1}", "line 1, column 2", "'t' is not expected here"},
    {"[nul]", "line 1, column 5", "']' is not expected here"},
    {"[1 // one\n]", "line 1, column 4", "'/' is not expected here"},
    {"{\xC3\xBC: 1}", "line 1, column 2", "'\xC3\xBC' is not expected here"},
    {"[\"\xC3\xBC\xF0\x9F\x98\x80\", oops]", "line 1, column 8", "'o' is not expected here"},
    {"\xEF\xBB\xBF{oops}", "line 1, column 2", "'o' is not expected here"},
    {"[01]", "line 1, column 3", "'1' is not expected here"},
    {"[1.x]", "line 1, column 4", "'x' is not expected here"},
    {"[\"\\q\"]", "line 1, column 4", "'q' is not expected here"},
    {"[\"\\u12G4\"]", "line 1, column 7", "'G' is not expected here"},
    {"{} {}", "line 1, column 4", "nothing may follow the value"},
    {"1\ngarbage", "line 2, column 1", "nothing may follow the value"},
    {"1 true", "line 1, column 3", "nothing may follow the value"},
    {"{} \"text\"", "line 1, column 4", "nothing may follow the value"},
    {"[1, -1e999]", "line 1, column 5", "the number is too large"},
    {"1e999", "line 1, column 1", "the number is too large"},
    {"[\"a\nb\"]", "line 1, column 4", "a text is not closed before its line ends"},
    {"[\"a\r\nb\"]", "line 1, column 4", "a text is not closed before its line ends"},
    {"[\"a\tb\"]", "line 1, column 4", "a control character has to be an escape"},
    {"[\x01]", "line 1, column 2", "a control character has to be an escape"},
    {"[\"ab\xFF\"]", "line 1, column 5", "what stands here is not UTF-8"},
    {"[\"ab\xC3(\"]", "line 1, column 5", "what stands here is not UTF-8"},
    {"[\"\xED\xA0\x80\"]", "line 1, column 3", "what stands here is not UTF-8"},
    {"\xFF", "line 1, column 1", "what stands here is not UTF-8"},
    {"\xEF\xBB{}", "line 1, column 1", "what stands here is not UTF-8"},
    {"[1,\0]"sv, "line 1, column 4", "a zero octet stands in the text"},
    {"{}\n\0"sv, "line 2, column 1", "a zero octet stands in the text"},
};

TEST(JSONMistake, IsSaidInOneWordingWithItsPlace) {
    for (const Broken& one : texts) {
        EXPECT_EQ(saidOf(one.text), std::string("not JSON at ") + one.place + ": " + one.why) << one.text;
    }
}

TEST(JSONMistake, OfNestingIsTheFirstThatLiesTooDeep) {
    const std::string open(512, '[');
    EXPECT_EQ(saidOf(open + "{}"), "not JSON at line 1, column 513: objects and lists lie deeper than 512 levels");
    EXPECT_EQ(saidOf("[\n\"]\\\"[\",[]," + open),
              "not JSON at line 2, column 522: objects and lists lie deeper than 512 levels")
        << "what stands in a text does not count";
}

TEST(JSONMistake, HasAPlaceInTheTextOrRightBehindIt) {
    const std::string whole = R"({"a": [1.5e3, "\u00e9\ud83d\ude00", true, null, {"b": {}}], "c": -0})";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string text = whole.substr(0, length);
        const auto parsed = JSONSerialization::parse(text);
        ASSERT_TRUE(std::holds_alternative<JSONProblem>(parsed)) << text;
        EXPECT_LE(std::get<JSONProblem>(parsed).offset, text.size()) << text;
    }
}

TEST(JSONMistake, SpeaksInWordsOfItsOwnWhateverOctetIsWrong) {
    const std::string whole = R"({"a": [1.5e3, "\u00e9 x", true, null, {"b": {}}], "c": -0})";
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (int octet = 0; octet < 256; ++octet) {
            std::string text = whole;
            text[place] = static_cast<char>(octet);
            const std::string said = saidOf(text);
            for (const char* foreign : {"json.exception", "parse", "syntax", "last read", "literal"}) {
                EXPECT_EQ(said.find(foreign), std::string::npos) << said;
            }
        }
    }
}

}  // namespace
}  // namespace nearcast
