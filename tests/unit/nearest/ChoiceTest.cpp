// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Nearest.h>

#include <gtest/gtest.h>

#include "nearest/Figures.h"

#include <set>
#include <string>

namespace nearcast {

namespace {

TEST(NearestChoiceTest, SaysInOneLineWhatWasChosenAndWhy) {
    NearestChoice choice;
    choice.device = NearestCandidate{"BT:Bar", "02:00:00:00:00:0A", -58.04, -65};
    choice.runnerUp = NearestCandidate{"BT:Kitchen", "02:00:00:00:00:0B", -64, -65};
    choice.distance = 5.96;
    choice.rule = NearestRule::entered;
    EXPECT_EQ(choice.text(), "BT:Bar at -58 dBm (threshold -65), 6 dB before BT:Kitchen: entered");
}

TEST(NearestChoiceTest, SaysThatTheChosenOneIsBehind) {
    NearestChoice choice;
    choice.device = NearestCandidate{"BT:Bar", "02:00:00:00:00:0A", -60, -65};
    choice.runnerUp = NearestCandidate{"BT:Kitchen", "02:00:00:00:00:0B", -57.5, -65};
    choice.distance = -2.5;
    choice.rule = NearestRule::led;
    choice.stale = true;
    EXPECT_EQ(choice.text(), "BT:Bar at -60 dBm (threshold -65), 2.5 dB behind BT:Kitchen: led, stale");
}

TEST(NearestChoiceTest, SaysThatNobodyIsChosen) {
    NearestChoice choice;
    choice.rule = NearestRule::silent;
    EXPECT_EQ(choice.text(), "none: silent");
}

TEST(NearestChoiceTest, NamesEachRuleInItsOwnWay) {
    std::set<std::string_view> names;
    for (const NearestRule rule : {NearestRule::noneInside, NearestRule::entered, NearestRule::led, NearestRule::left,
                                   NearestRule::silent, NearestRule::blind, NearestRule::removed}) {
        names.insert(nameOf(rule));
    }
    EXPECT_EQ(names.size(), 7U);
    EXPECT_FALSE(names.contains("unknown"));
}

TEST(FiguresTest, WritesAtMostOneDecimalPlace) {
    EXPECT_EQ(nearest::oneDecimal(2), "2");
    EXPECT_EQ(nearest::oneDecimal(-2.25), "-2.3");
    EXPECT_EQ(nearest::oneDecimal(2.04), "2");
    EXPECT_EQ(nearest::oneDecimal(-0.04), "0");
    EXPECT_EQ(nearest::oneDecimal(1e15), "1e+15");
}

}  // namespace

}  // namespace nearcast
