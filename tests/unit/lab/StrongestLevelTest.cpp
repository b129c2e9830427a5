// SPDX-License-Identifier: Apache-2.0
#include "lab/StrongestLevel.h"

#include <gtest/gtest.h>

namespace nearcast::lab {
namespace {

using Source = StrongestLevel::Source;

struct StrongestLevelTest : testing::Test {
    StrongestLevel rule{Source::raw, [] { return std::make_unique<LatestLevel>(); }};
    StrongestLevel averages{Source::raw, [] { return std::make_unique<ExponentialLevel>(); }};
};

TEST_F(StrongestLevelTest, NothingHeardIsNone) { EXPECT_EQ(rule.nearest(0), ""); }

TEST_F(StrongestLevelTest, TheStrongestIsNearest) {
    rule.heard(0, "A", -60);
    rule.heard(0, "B", -59);
    EXPECT_EQ(rule.nearest(0), "B");
    rule.heard(1, "A", -58);
    EXPECT_EQ(rule.nearest(1), "A");
}

TEST_F(StrongestLevelTest, ATieKeepsThePresentOne) {
    rule.heard(0, "A", -60);
    rule.heard(0, "B", -50);
    EXPECT_EQ(rule.nearest(0), "B");
    rule.heard(1, "B", -60);
    EXPECT_EQ(rule.nearest(1), "B");
    rule.heard(2, "A", -59);
    EXPECT_EQ(rule.nearest(2), "A");
    rule.heard(3, "B", -59);
    EXPECT_EQ(rule.nearest(3), "A");
}

TEST_F(StrongestLevelTest, OfATieOfOthersTheOneThatCameFirstIsNearest) {
    rule.heard(0, "B", -60);
    rule.heard(0, "A", -60);
    EXPECT_EQ(rule.nearest(0), "B");
}

TEST_F(StrongestLevelTest, ADongleUnheardForFiveSecondsIsOut) {
    rule.heard(0, "A", -50);
    rule.heard(1, "B", -60);
    EXPECT_EQ(rule.nearest(4.999), "A");
    EXPECT_EQ(rule.nearest(5), "B");
    EXPECT_EQ(rule.nearest(6), "");
}

TEST_F(StrongestLevelTest, ADongleUnheardForFiveSecondsBeginsAnew) {
    const auto heardAgainAfter = [this](double seconds) {
        averages.heard(0, "A", -50);
        averages.heard(seconds, "A", -90);
        averages.heard(seconds, "B", -70);
        return averages.nearest(seconds);
    };
    EXPECT_EQ(heardAgainAfter(4.999), "A");  // -54
    EXPECT_EQ(heardAgainAfter(5), "B");      // -90
}

TEST_F(StrongestLevelTest, OneThatWasOutHasNoPrecedenceOfItsOwn) {
    rule.heard(0, "A", -60);
    EXPECT_EQ(rule.nearest(0), "A");
    rule.heard(5, "B", -60);
    rule.heard(5, "A", -60);
    rule.heard(5, "C", -50);
    EXPECT_EQ(rule.nearest(5), "C");
    rule.heard(6, "C", -70);
    EXPECT_EQ(rule.nearest(6), "B");
}

TEST_F(StrongestLevelTest, RawReadingsAndReportsAreKeptApart) {
    StrongestLevel reports(Source::reports, [] { return std::make_unique<LatestLevel>(); });
    reports.heard(0, "A", -50);
    EXPECT_EQ(reports.nearest(0), "");
    reports.reported(0, "B", -80);
    EXPECT_EQ(reports.nearest(0), "B");
    rule.reported(0, "A", -50);
    EXPECT_EQ(rule.nearest(0), "");
}

}  // namespace
}  // namespace nearcast::lab
