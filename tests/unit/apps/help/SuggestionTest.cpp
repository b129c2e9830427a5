// SPDX-License-Identifier: Apache-2.0
#include "help/Suggestion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

TEST(Suggestion, CountsTheLettersThatDiffer) {
    const struct {
        const char* one;
        const char* other;
        std::size_t distance;
    } cases[] = {
        {"", "", 0},           {"watch", "watch", 0},  {"", "abc", 3},
        {"wach", "watch", 1},  {"waatch", "watch", 1}, {"wetch", "watch", 1},
        {"wacth", "watch", 1}, {"awtch", "watch", 1},  {"atw", "wat", 2},
        {"run", "scene", 4},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(distanceBetween(each.one, each.other), each.distance) << each.one << ", " << each.other;
        EXPECT_EQ(distanceBetween(each.other, each.one), each.distance) << each.other << ", " << each.one;
    }
}

TEST(Suggestion, IsTheWordThatIsAFewLettersAway) {
    const std::vector<std::string> words{"watch", "record", "run", "evaluate", "report"};
    const struct {
        const char* typed;
        const char* meant;
    } cases[] = {
        {"wach", "watch"}, {"Watch", "watch"},   {"wxxch", ""},        {"rum", "run"},           {"rxx", ""},
        {"x", ""},         {"reprot", "report"}, {"repord", "record"}, {"evalaute", "evaluate"}, {"evl", ""},
        {"", ""},
    };
    for (const auto& each : cases) EXPECT_EQ(closestWord(each.typed, words), each.meant) << each.typed;
}

TEST(Suggestion, IsTheFirstWordThatBeginsSo) {
    const std::vector<std::string> words{"record", "report", "evaluate"};
    EXPECT_EQ(closestWord("eva", words), "evaluate");
    EXPECT_EQ(closestWord("repo", words), "report");
    EXPECT_EQ(closestWord("ev", words), "") << "two letters say too little";
}

TEST(Suggestion, OfALongTextIsNone) {
    const std::vector<std::string> words{std::string(65, 'a'), std::string(64, 'b')};
    EXPECT_EQ(closestWord(std::string(64, 'b'), words), words[1]);
    EXPECT_EQ(closestWord(std::string(65, 'a'), words), "");
}

}  // namespace
}  // namespace nearcast::cli
