// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/timeline/TimelineFixture.h"

#include <stdexcept>

namespace nearcast {

namespace {

using End = Timeline::End;

TEST_F(TimelineTest, StandsStillUntilItIsDriven) {
    timer("timer", 1us);
    EXPECT_EQ(timeline->now(), 0us);
    EXPECT_EQ(words, Words{});
}

TEST_F(TimelineTest, StopsAtTheTargetThatMomentIncluded) {
    timer("timer", 5us);
    EXPECT_EQ(timeline->runUntil(4us), End::reached);
    EXPECT_EQ(words, Words{});
    EXPECT_EQ(timeline->now(), 4us);
    EXPECT_EQ(timeline->runUntil(5us), End::reached);
    EXPECT_EQ(words, Words{"5 timer"});
}

TEST_F(TimelineTest, NeverGoesBack) {
    timeline->runUntil(10us);
    EXPECT_EQ(timeline->runUntil(5us), End::reached);
    EXPECT_EQ(timeline->now(), 10us);
}

TEST_F(TimelineTest, FiresEachTimerAtItsOwnDueTime) {
    timer("slow", 6us);
    timer("quick", 4us);
    timeline->runUntil(12us);
    EXPECT_EQ(words, (Words{"4 quick", "6 slow", "8 quick", "12 slow", "12 quick"}));
}

TEST_F(TimelineTest, FiresTheOlderTimerFirstWhenTwoAreDueTogether) {
    timer("older", 2us);
    timer("younger", 1us);
    timeline->runUntil(2us);
    EXPECT_EQ(words, (Words{"1 younger", "2 older", "2 younger"}));
}

TEST_F(TimelineTest, TakesPartsOfAMicrosecondAsAWholeOne) {
    timer("timer", 1001ns);
    timeline->runUntil(1us);
    EXPECT_EQ(words, Words{});
    timeline->runUntil(2us);
    EXPECT_EQ(words, Words{"2 timer"});
}

TEST_F(TimelineTest, FiresTimersBeforeHappeningsOfTheSameMoment) {
    happening("line", 5us);
    happening("another", 5us);
    timeline->setSource(&happenings);
    timer("timer", 5us);
    timeline->runUntil(5us);
    EXPECT_EQ(words, (Words{"5 timer", "5 line", "5 another"}));
}

TEST_F(TimelineTest, LetsALateHappeningHappenNow) {
    timeline->runUntil(10us);
    happening("late", 3us);
    timeline->setSource(&happenings);
    timeline->runUntil(10us);
    EXPECT_EQ(words, Words{"10 late"});
}

TEST_F(TimelineTest, TellsOnceThatTheSourceIsExhausted) {
    happening("last", 5us);
    timeline->setSource(&happenings);
    EXPECT_EQ(timeline->runUntil(10us), End::exhausted);
    EXPECT_EQ(timeline->now(), 5us);
    EXPECT_EQ(timeline->runUntil(10us), End::reached);
    EXPECT_EQ(timeline->now(), 10us);
}

TEST_F(TimelineTest, RunsToTheLastHappeningAndNoFurther) {
    happening("first", 3us);
    happening("last", 7us);
    timeline->setSource(&happenings);
    timer("timer", 2us);
    timeline->runToLastHappening();
    EXPECT_EQ(words, (Words{"2 timer", "3 first", "4 timer", "6 timer", "7 last"}));
    EXPECT_EQ(timeline->now(), 7us);
}

/// A radio that waits for the first scan has more to come, but not by itself.
TEST_F(TimelineTest, DoesNotRunTowardsAHappeningWithoutATime) {
    happening("first", 3us);
    happening("never", Timeline::forever + 1us);
    timeline->setSource(&happenings);
    timeline->runToLastHappening();
    EXPECT_EQ(words, Words{"3 first"});
    EXPECT_EQ(timeline->now(), 3us);
    EXPECT_EQ(timeline->runUntil(10us), End::reached);
}

TEST_F(TimelineTest, StopsWhereItIsInterrupted) {
    happenings.add(5us, [this] { timeline->interrupt(); });
    timeline->setSource(&happenings);
    EXPECT_EQ(timeline->runUntil(10us), End::interrupted);
    EXPECT_EQ(timeline->now(), 5us);
}

TEST_F(TimelineTest, KeepsAnInterruptionForTheNextRun) {
    timeline->interrupt();
    EXPECT_EQ(timeline->runUntil(10us), End::interrupted);
    EXPECT_EQ(timeline->now(), 0us);
    EXPECT_EQ(timeline->runUntil(10us), End::reached);
}

TEST_F(TimelineTest, PutsWhatAHandlerThrowsOnTheConsoleAndGoesOn) {
    timeline->scheduledTimer(2us, [](NSTimer&) { throw std::runtime_error("broken"); });
    timer("timer", 3us);
    timeline->runUntil(4us);
    EXPECT_EQ(words, Words{"3 timer"});
    EXPECT_EQ(console.lines(), Words(2, "The handler of a timer failed: broken"));
}

TEST_F(TimelineTest, PassesWhatAHappeningThrowsToTheDriver) {
    happenings.add(5us, [] { throw std::runtime_error("broken"); });
    happening("next", 6us);
    timeline->setSource(&happenings);
    EXPECT_THROW(timeline->runUntil(10us), std::runtime_error);
    EXPECT_EQ(timeline->now(), 5us);
    timeline->runUntil(10us);
    EXPECT_EQ(words, Words{"6 next"});
}

TEST_F(TimelineTest, ReachesTheLastMomentThatADateCanHold) {
    timer("timer", std::chrono::nanoseconds::max());
    EXPECT_EQ(timeline->runUntil(Timeline::forever), End::reached);
    EXPECT_EQ(timeline->now(), Timeline::forever);
    EXPECT_EQ(std::chrono::nanoseconds(timeline->now()), Timeline::forever);
    timer("late", 1h);
    EXPECT_EQ(words, Words{});
}

TEST_F(TimelineTest, EndsItsTimersWhenItIsDestroyed) {
    const auto last = timer("timer", 1us);
    timeline.reset();
    last->fire();
    last->invalidate();
    EXPECT_EQ(words, Words{});
}

}  // namespace

}  // namespace nearcast
