// SPDX-License-Identifier: Apache-2.0
#include "unit/platform/timeline/TimelineFixture.h"

namespace nearcast {

namespace {

TEST_F(TimelineTest, MovesTheClockThroughASleepItsLastMomentIncluded) {
    happening("inside", 5us);
    happening("at its end", 10us);
    happening("after it", 11us);
    timeline->setSource(&happenings);
    timer("timer", 4us);
    timeline->sleep(10us);
    EXPECT_EQ(words, (Words{"4 timer", "5 inside", "8 timer", "10 at its end"}));
    EXPECT_EQ(timeline->now(), 10us);
}

TEST_F(TimelineTest, LetsHappeningsOfThisMomentHappenInASleepOfNoLength) {
    happening("now", 0us);
    happening("later", 1us);
    timeline->setSource(&happenings);
    timeline->sleep(0us);
    EXPECT_EQ(words, Words{"0 now"});
}

TEST_F(TimelineTest, RunsASleepInsideASleepToItsOwnEndFirst) {
    happenings.add(2us, [this] {
        note("sleeps");
        timeline->sleep(10us);
        note("has slept");
    });
    happening("while both sleep", 4us);
    happening("while the inner one sleeps", 8us);
    happening("after both", 13us);
    timeline->setSource(&happenings);
    timeline->sleep(5us);
    EXPECT_EQ(words, (Words{"2 sleeps", "4 while both sleep", "8 while the inner one sleeps", "12 has slept"}));
    EXPECT_EQ(timeline->now(), 12us);
}

TEST_F(TimelineTest, LetsATimerSleepAndMissItsOwnFirings) {
    int firings = 0;
    timeline->scheduledTimer(2us, [&](NSTimer&) {
        note("fires");
        if (++firings == 1) timeline->sleep(7us);
    });
    timeline->runUntil(10us);
    EXPECT_EQ(words, (Words{"2 fires", "4 fires", "6 fires", "8 fires", "10 fires"}));
}

TEST_F(TimelineTest, EndsARunThatIsInterruptedInASleepAfterTheSleep) {
    happenings.add(2us, [this] { timeline->sleep(10us); });
    happenings.add(4us, [this] { timeline->interrupt(); });
    timeline->setSource(&happenings);
    EXPECT_EQ(timeline->runUntil(100us), Timeline::End::interrupted);
    EXPECT_EQ(timeline->now(), 12us);
}

}  // namespace

}  // namespace nearcast
