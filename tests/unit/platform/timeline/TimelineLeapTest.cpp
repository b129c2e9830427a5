// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManualPace.h"
#include "unit/platform/timeline/TimelineFixture.h"

#include <thread>
#include <utility>

namespace nearcast {

namespace {

using Time = Timeline::Time;

/// A timeline that may leap; what happens on it is noted in seconds.
class TimelineLeapTest : public TimelineTest {
protected:
    TimelineLeapTest() { timeline->allowLeaps(); }

    void noteSecond(const std::string& name) {
        words.push_back(std::to_string(std::chrono::floor<std::chrono::seconds>(timeline->now()).count()) + " " + name);
    }
    std::shared_ptr<NSTimer> idler(const std::string& name, std::chrono::nanoseconds interval) {
        return timeline->scheduledIdlingTimer(
            interval, [this, name](NSTimer&) { noteSecond(name); }, [this] { return idle; });
    }
    std::shared_ptr<NSTimer> worker(const std::string& name, std::chrono::nanoseconds interval) {
        return timeline->scheduledTimer(interval, [this, name](NSTimer&) { noteSecond(name); });
    }
    void event(const std::string& name, Time at) {
        happenings.add(at, [this, name] { noteSecond(name); });
        timeline->setSource(&happenings);
    }

    bool idle = true;
};

TEST_F(TimelineLeapTest, ATimeWithoutAnythingToDoIsPassedAtOnce) {
    idler("sweep", 5s);
    event("report", 1'000'000'000s);
    timeline->runToLastHappening();
    EXPECT_EQ(words, (Words{"1000000000 sweep", "1000000000 report"}));
    EXPECT_EQ(timeline->now(), 1'000'000'000s);
}

TEST_F(TimelineLeapTest, AnHourIsPlayedWholeAndAMicrosecondMoreIsNot) {
    idler("tick", 30min);
    timeline->runUntil(1h);
    EXPECT_EQ(words, (Words{"1800 tick", "3600 tick"}));
    timeline->runUntil(2h + 1us);
    EXPECT_EQ(words.size(), 2U);
    EXPECT_EQ(timeline->now(), 2h + 1us);
}

TEST_F(TimelineLeapTest, TimersAreDueAtTheirOwnTimesAfterwards) {
    idler("sweep", 5s);
    idler("restart", 7s);
    timeline->runUntil(10'002s);
    EXPECT_EQ(words, Words{});
    timeline->runUntil(10'010s);
    EXPECT_EQ(words, (Words{"10003 restart", "10005 sweep", "10010 sweep", "10010 restart"}));
}

TEST_F(TimelineLeapTest, ATimerThatIsNotIdleEndsALeapWhereItIsDue) {
    idler("sweep", 5s);
    worker("work", 10'002s);
    event("report", 20'001s);
    timeline->runToLastHappening();
    EXPECT_EQ(words, (Words{"10002 work", "20001 report"}));
}

TEST_F(TimelineLeapTest, ATimerWithSomethingToDoEveryHourLeavesNothingToLeapOver) {
    idler("tick", 30min);
    worker("work", 1h);
    timeline->runUntil(2h + 1us);
    EXPECT_EQ(words, (Words{"1800 tick", "3600 tick", "3600 work", "5400 tick", "7200 tick", "7200 work"}));
}

TEST_F(TimelineLeapTest, ATimerIsIdleFromTheMomentOnThatItSaysSo) {
    idle = false;
    timeline->scheduledIdlingTimer(
        5s,
        [this](NSTimer&) {
            noteSecond("sweep");
            idle = words.size() == 3;
        },
        [this] { return idle; });
    timeline->runUntil(1'000'000'002s);
    EXPECT_EQ(words, (Words{"5 sweep", "10 sweep", "15 sweep"}));
}

TEST_F(TimelineLeapTest, TwoTimesArePassedAndOneAtTheEnd) {
    idler("sweep", 5s);
    event("first", 1'000'001s);
    event("second", 3'000'003s);
    timeline->runUntil(9'000'000'001s);  // the source has ended
    timeline->runUntil(9'000'000'001s);
    EXPECT_EQ(words, (Words{"1000001 first", "3000003 second"}));
    EXPECT_EQ(timeline->now(), 9'000'000'001s);
}

TEST_F(TimelineLeapTest, ASleepInsideAnEventLeaps) {
    idler("sweep", 5s);
    happenings.add(1us, [this] { timeline->sleep(10'000'001s); });
    timeline->setSource(&happenings);
    timeline->runToLastHappening();
    EXPECT_EQ(words, Words{});
    EXPECT_EQ(timeline->now(), 10'000'001s + 1us);
}

TEST_F(TimelineLeapTest, ATimerThatIsMadeWhileTheOthersAreAskedFiresAtItsOwnTime) {
    bool made = false;
    timeline->scheduledIdlingTimer(
        5s, [](NSTimer&) {},
        [&] {
            if (!std::exchange(made, true)) worker("work", 1s);
            return true;
        });
    timeline->runUntil(3s);
    EXPECT_EQ(words, Words{});
    timeline->runUntil(4h);
    ASSERT_FALSE(words.empty());
    EXPECT_EQ(words.front(), "4 work");
}

TEST_F(TimelineLeapTest, AnInvalidatedTimerHoldsNothingUp) {
    worker("work", 5s)->invalidate();
    timeline->runUntil(1'000'000'000s);
    EXPECT_EQ(words, Words{});
}

TEST_F(TimelineLeapTest, WithoutLeaveEveryTimerFires) {
    const auto plain = std::make_shared<Timeline>(console);
    int fired = 0;
    plain->scheduledIdlingTimer(
        5s, [&](NSTimer&) { ++fired; }, [] { return true; });
    plain->runUntil(24h);
    EXPECT_EQ(fired, 24 * 3600 / 5);
    EXPECT_EQ(plain->quiet(), 0us);
}

TEST_F(TimelineLeapTest, AClockThatKeepsAPaceFiresEveryTimer) {
    auto owned = std::make_unique<ManualPace>();
    owned->set(24h);
    const auto paced = std::make_shared<Timeline>(console, std::move(owned));
    paced->allowLeaps();
    int fired = 0;
    paced->scheduledIdlingTimer(
        1h, [&](NSTimer&) { ++fired; }, [] { return true; });
    EXPECT_EQ(paced->quiet(), 0us);
    paced->runUntil(24h);
    EXPECT_EQ(fired, 24);
}

TEST_F(TimelineLeapTest, QuietLastsUntilTheNextEventOrWork) {
    idler("sweep", 5s);
    EXPECT_EQ(timeline->quiet(), Timeline::forever);
    event("report", 1h);
    EXPECT_EQ(timeline->quiet(), 0us);
    timeline->runToLastHappening();
    event("report", 3h + 1us);
    EXPECT_EQ(timeline->quiet(), 2h + 1us);
    worker("work", 90min);
    EXPECT_EQ(timeline->quiet(), 90min);
    worker("work", 1h);
    EXPECT_EQ(timeline->quiet(), 0us);
    EXPECT_EQ(timeline->now(), 1h);
}

TEST_F(TimelineLeapTest, QuietMayBeAskedForInsideAnEventAndIsNoneForOtherThreadsThen) {
    Time inside{0};
    Time elsewhere{1};
    happenings.add(1us, [&] {
        inside = timeline->quiet();
        std::thread([&] { elsewhere = timeline->quiet(); }).join();
    });
    timeline->setSource(&happenings);
    timeline->runToLastHappening();
    EXPECT_EQ(inside, Timeline::forever - 1us);
    EXPECT_EQ(elsewhere, 0us);
}

}  // namespace

}  // namespace nearcast
