// SPDX-License-Identifier: Apache-2.0
#include "lab/Score.h"

#include <gtest/gtest.h>

#include <vector>

namespace nearcast::lab {
namespace {

/// Answers of one letter each, one a sample; a blank is none.
Answers answersOf(const std::string& letters) {
    Answers answers;
    for (const char letter : letters) answers.push_back({letter == ' ' ? std::string() : std::string(1, letter)});
    return answers;
}

Score scoreOf(const std::string& letters, const lines::Truth& truth) { return lab::scoreOf(answersOf(letters), truth); }

const lines::Truth alwaysA{{0, "A"}};

TEST(Score, CountsRightAnswersOfAllTimeAndOfTheTimeAnswered) {
    const Score score = scoreOf("  BA", alwaysA);
    EXPECT_EQ(score.samples, 4U);
    EXPECT_EQ(score.rightOfAll(), 0.25);
    EXPECT_EQ(score.rightOfAnswered(), 0.5);
    EXPECT_DOUBLE_EQ(score.minutes(), 4 * 0.5 / 60);
}

TEST(Score, NoneIsRightWhereTheUserStandsNextToNone) {
    const Score score = scoreOf(" A ", {{0, ""}});
    EXPECT_EQ(score.right, 2U);
    EXPECT_EQ(score.answered, 1U);
    EXPECT_EQ(score.rightAnswered, 0U);
}

TEST(Score, SamplesBeforeTheFirstMarkDoNotCount) {
    EXPECT_EQ(scoreOf("AAA", {{0.5, "A"}}).samples, 2U);
    EXPECT_EQ(scoreOf("AAA", {{0.501, "A"}}).samples, 1U);
    EXPECT_EQ(scoreOf("AAA", {{9, "A"}}).samples, 0U);
}

TEST(Score, AMarkHoldsFromItsMomentOn) {
    EXPECT_EQ(scoreOf("AAB", {{0, "A"}, {1, "B"}}).right, 3U);
    EXPECT_EQ(scoreOf("AAB", {{0, "A"}, {1.001, "B"}}).right, 2U);
}

TEST(Score, ASwitchToAWrongDongleIsCountedAndOneToNoneOrTheTruthIsNot) {
    EXPECT_EQ(scoreOf("AAAA", alwaysA).wrongSwitches, 0U);
    EXPECT_EQ(scoreOf("ABBA", alwaysA).wrongSwitches, 1U);
    EXPECT_EQ(scoreOf("ABCA", alwaysA).wrongSwitches, 2U);
    EXPECT_EQ(scoreOf("A A ", alwaysA).wrongSwitches, 0U);
    EXPECT_EQ(scoreOf("AB B", alwaysA).wrongSwitches, 2U);
    EXPECT_EQ(scoreOf("BBBB", alwaysA).wrongSwitches, 1U);
}

TEST(Score, AnAnswerThatBecomesWrongByAChangeOfTheTruthIsNoSwitch) {
    EXPECT_EQ(scoreOf("AAAA", {{0, "A"}, {1, "B"}}).wrongSwitches, 0U);
}

TEST(Score, WrongSwitchesAreCountedByTheMinute) {
    const Score score = scoreOf(std::string(119, 'A') + "B", alwaysA);
    EXPECT_EQ(score.wrongSwitchesPerMinute(), 1);
}

TEST(Score, AChangeIsFollowedAtTheFirstRightSampleAfterIt) {
    const lines::Truth truth{{0, "A"}, {0.9, "B"}};
    EXPECT_EQ(scoreOf("AAB", truth).followed, std::vector{1 - 0.9});
    EXPECT_EQ(scoreOf("AAABAB", truth).followed, std::vector{1.5 - 0.9});
    EXPECT_EQ(scoreOf("AAB", {{0, "A"}, {1, "B"}}).followed, std::vector{0.0});
}

TEST(Score, AnAnswerThatWasRightBeforeTheChangeDoesNotFollowItUntilASample) {
    EXPECT_EQ(scoreOf("BBB", {{0, "A"}, {0.75, "B"}}).followed, std::vector{0.25});
}

TEST(Score, TheBeginIsNoChange) {
    const Score score = scoreOf("BBA", alwaysA);
    EXPECT_EQ(score.changes, 0U);
    EXPECT_TRUE(score.followed.empty());
}

TEST(Score, MarksThatRepeatTheDongleAreNoChanges) {
    EXPECT_EQ(scoreOf("AAAA", {{0, "A"}, {0.5, "A"}, {1, "A"}}).changes, 0U);
}

TEST(Score, AChangeThatIsNotReachedBeforeTheNextOneIsNeverReached) {
    const Score score = scoreOf("AAAC", {{0, "A"}, {0.5, "B"}, {1.5, "C"}});
    EXPECT_EQ(score.changes, 2U);
    EXPECT_EQ(score.neverReached, 1U);
    EXPECT_EQ(score.followed, std::vector{0.0});
}

TEST(Score, AChangeThatIsNotReachedBeforeTheEndIsNeverReached) {
    const Score score = scoreOf("AAAA", {{0, "A"}, {0.5, "B"}});
    EXPECT_EQ(score.neverReached, 1U);
    EXPECT_EQ(score.timeToFollow(0.5), std::nullopt);
}

TEST(Score, AChangeAfterTheLastSampleIsNone) {
    EXPECT_EQ(scoreOf("AA", {{0, "A"}, {0.501, "B"}}).changes, 0U);
    EXPECT_EQ(scoreOf("AA", {{0, "A"}, {0.5, "B"}}).changes, 1U);
}

TEST(Score, AChangeToNoneIsFollowedByNone) {
    EXPECT_EQ(scoreOf("AA ", {{0, "A"}, {0.5, ""}}).followed, std::vector{0.5});
}

TEST(Score, QuantilesLieBetweenTheTwoNearestTimes) {
    Score score;
    score.followed = {4, 1, 2};
    EXPECT_EQ(score.timeToFollow(0), 1);
    EXPECT_EQ(score.timeToFollow(0.5), 2);
    EXPECT_EQ(score.timeToFollow(0.75), 3);
    EXPECT_EQ(score.timeToFollow(1), 4);
    score.followed = {3};
    EXPECT_EQ(score.timeToFollow(0.9), 3);
}

TEST(Score, RecordingsArePooled) {
    Score total = scoreOf("A", alwaysA);
    total += scoreOf("BBB", alwaysA);
    total += scoreOf("AB", {{0, "A"}, {0.25, "B"}});
    EXPECT_EQ(total.rightOfAll(), 0.5);
    EXPECT_EQ(total.wrongSwitches, 1U);
    EXPECT_EQ(total.changes, 1U);
    EXPECT_EQ(total.followed, std::vector{0.25});
}

TEST(Score, WithoutASampleThereAreNoShares) {
    const Score score = scoreOf("", alwaysA);
    EXPECT_EQ(score.rightOfAll(), std::nullopt);
    EXPECT_EQ(score.rightOfAnswered(), std::nullopt);
    EXPECT_EQ(score.wrongSwitchesPerMinute(), std::nullopt);
    EXPECT_EQ(scoreOf(" ", alwaysA).rightOfAnswered(), std::nullopt);
}

}  // namespace
}  // namespace nearcast::lab
