// SPDX-License-Identifier: Apache-2.0
#include "platform/timers/TimerQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

using namespace std::chrono_literals;
using Time = TimerQueue::Time;

class TimerQueueTest : public testing::Test {
protected:
    std::shared_ptr<NSTimer> add(const std::string& name, Time interval, Time now = 0ns) {
        return queue->add(
            interval, [this, name](NSTimer&) { fired.push_back(name); }, now);
    }
    void addIdler(const std::string& name, Time interval) {
        queue->add(
            interval, [this, name](NSTimer&) { fired.push_back(name); }, 0ns, [this] { return idle; });
    }
    /// Fires all that is due until `now`, each timer once.
    std::vector<std::string> run(Time now) {
        fired.clear();
        while (const auto timer = queue->takeDue(now, now)) timer->fire();
        return fired;
    }

    std::shared_ptr<TimerQueue> queue = std::make_shared<TimerQueue>();
    std::vector<std::string> fired;
    bool idle = true;
};

using Names = std::vector<std::string>;

TEST_F(TimerQueueTest, HasNothingDueWhileItIsEmpty) {
    EXPECT_EQ(queue->nextDue(), std::nullopt);
    EXPECT_EQ(run(1h), Names{});
}

TEST_F(TimerQueueTest, FiresAfterOneIntervalAndNotBefore) {
    add("a", 10ns, 100ns);
    EXPECT_EQ(queue->nextDue(), 110ns);
    EXPECT_EQ(run(109ns), Names{});
    EXPECT_EQ(run(110ns), Names{"a"});
}

TEST_F(TimerQueueTest, FiresOnMultiplesOfTheIntervalHoweverLateItIsTaken) {
    add("a", 10ns);
    EXPECT_EQ(run(17ns), Names{"a"});
    EXPECT_EQ(queue->nextDue(), 20ns);
    EXPECT_EQ(run(20ns), Names{"a"});
    EXPECT_EQ(queue->nextDue(), 30ns);
}

TEST_F(TimerQueueTest, FiresOnceForAllThatWasMissed) {
    add("a", 10ns);
    EXPECT_EQ(run(59ns), Names{"a"});
    EXPECT_EQ(queue->nextDue(), 60ns);
}

TEST_F(TimerQueueTest, LeavesOutWhatWasMissedBetweenTheLimitAndNow) {
    add("a", 10ns);
    ASSERT_NE(queue->takeDue(10ns, 39ns), nullptr);
    EXPECT_EQ(queue->nextDue(), 40ns);
    EXPECT_EQ(queue->takeDue(39ns, 40ns), nullptr);
    ASSERT_NE(queue->takeDue(40ns, 40ns), nullptr);
    EXPECT_EQ(queue->nextDue(), 50ns);
}

TEST_F(TimerQueueTest, FiresTheOlderTimerFirstWhenTwoAreDueTogether) {
    add("older", 20ns);
    add("younger", 10ns);
    EXPECT_EQ(run(10ns), Names{"younger"});
    EXPECT_EQ(run(20ns), (Names{"older", "younger"}));
}

TEST_F(TimerQueueTest, FiresWhatIsDueEarlierFirst) {
    add("older", 20ns);
    add("younger", 19ns);
    EXPECT_EQ(run(20ns), (Names{"younger", "older"}));
}

TEST_F(TimerQueueTest, FiresNothingThatIsInvalidated) {
    const auto first = add("first", 10ns);
    add("second", 10ns);
    first->invalidate();
    first->invalidate();
    first->fire();
    EXPECT_EQ(run(10ns), Names{"second"});
}

TEST_F(TimerQueueTest, HasATimerValidUntilItIsInvalidated) {
    const auto timer = add("a", 10ns);
    EXPECT_TRUE(timer->isValid());
    run(10ns);
    EXPECT_TRUE(timer->isValid());
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
}

TEST_F(TimerQueueTest, FiresNothingThatIsInvalidatedAfterItWasTaken) {
    const auto timer = add("a", 10ns);
    const auto taken = queue->takeDue(10ns, 10ns);
    timer->invalidate();
    taken->fire();
    EXPECT_EQ(fired, Names{});
    EXPECT_EQ(queue->nextDue(), std::nullopt);
}

TEST_F(TimerQueueTest, KeepsATimerThatNobodyRefersTo) {
    add("a", 10ns).reset();
    EXPECT_EQ(run(10ns), Names{"a"});
}

TEST_F(TimerQueueTest, LetsAHandlerInvalidateItsTimerAndDropTheLastReference) {
    auto held = std::make_shared<int>(7);
    int seen = 0;
    queue->add(
        10ns,
        [held, &seen](NSTimer& timer) {
            timer.invalidate();
            seen = *held;  // what the handler holds is there until it returns
        },
        0ns);
    EXPECT_EQ(held.use_count(), 2);
    run(10ns);
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(TimerQueueTest, TakesAHandlerThatMakesAndEndsTimersWhenItIsDestroyed) {
    struct Ending {
        explicit Ending(TimerQueue& timers) : queue(timers) {}
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;
        TimerQueue& queue;
        ~Ending() { queue.add(1ns, nullptr, 0ns)->invalidate(); }
    };
    auto ending = std::make_shared<Ending>(*queue);
    const auto timer = queue->add(
        10ns, [ending](NSTimer&) {}, 0ns);
    ending.reset();
    timer->invalidate();
    EXPECT_EQ(queue->nextDue(), std::nullopt);
}

TEST_F(TimerQueueTest, PassesOnWhatAHandlerThrows) {
    const auto timer = queue->add(
        10ns, [](NSTimer&) { throw std::runtime_error("no"); }, 0ns);
    EXPECT_THROW(timer->fire(), std::runtime_error);
    EXPECT_EQ(queue->nextDue(), 10ns);
}

TEST_F(TimerQueueTest, TakesAnIntervalOfNothingAsANanosecond) {
    add("a", 0ns);
    EXPECT_EQ(queue->nextDue(), 1ns);
    add("b", -5ns);
    EXPECT_EQ(run(1ns), (Names{"a", "b"}));
}

TEST_F(TimerQueueTest, NeverFiresWhatLiesBeyondTheClock) {
    add("a", Time::max(), 100ns);
    EXPECT_EQ(queue->nextDue(), Time::max());
    EXPECT_EQ(run(Time::max() - 1ns), Names{});
}

TEST_F(TimerQueueTest, EndsAllTimersWhenItIsCleared) {
    const auto before = add("before", 10ns);
    queue->clear();
    const auto after = add("after", 10ns);
    EXPECT_EQ(queue->nextDue(), std::nullopt);
    before->fire();
    after->fire();
    EXPECT_EQ(fired, Names{});
}

TEST_F(TimerQueueTest, LeavesItsTimersUsableWhenItIsDestroyed) {
    const auto timer = add("a", 10ns);
    queue.reset();
    timer->fire();
    EXPECT_EQ(fired, Names{"a"});
    timer->invalidate();
    timer->fire();
    EXPECT_EQ(fired, Names{"a"});
}

TEST(TimerQueue, TellsWhatIsDueFirstWheneverThatChanges) {
    std::vector<std::optional<Time>> told;
    const auto queue = std::make_shared<TimerQueue>([&](std::optional<Time> due) { told.push_back(due); });
    const auto first = queue->add(
        10ns, [](NSTimer&) {}, 0ns);
    queue->add(
        20ns, [](NSTimer&) {}, 0ns);  // changes nothing
    const auto sooner = queue->add(
        5ns, [](NSTimer&) {}, 0ns);
    sooner->invalidate();
    queue->takeDue(10ns, 10ns);  // both are then due at 20
    queue->tellFront();
    queue->clear();
    const std::vector<std::optional<Time>> expected{10ns, 5ns, 10ns, 20ns, 20ns, std::nullopt};
    EXPECT_EQ(told, expected);
}

TEST(TimerQueue, LetsAFiringBeHandedOverOnceAtATime) {
    const auto queue = std::make_shared<TimerQueue>();
    queue->add(
        10ns, [](NSTimer&) {}, 0ns);
    const auto timer = queue->takeDue(10ns, 10ns);
    EXPECT_TRUE(timer->beginHandOver());
    EXPECT_FALSE(timer->beginHandOver());
    timer->endHandOver();
    EXPECT_TRUE(timer->beginHandOver());
}

TEST(TimerQueue, TakesTimersFromSeveralThreads) {
    const auto queue = std::make_shared<TimerQueue>();
    std::atomic<int> fired{0};
    std::vector<std::thread> crowd;
    for (int thread = 0; thread < 3; ++thread) {
        crowd.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                const auto timer = queue->add(
                    1ns, [&](NSTimer&) { ++fired; }, 0ns);
                if (const auto taken = queue->takeDue(1s, 1s)) taken->fire();
                timer->fire();
                timer->invalidate();
            }
        });
    }
    for (std::thread& thread : crowd) thread.join();
    EXPECT_GE(fired, 600);
    EXPECT_EQ(queue->nextDue(), std::nullopt);
}

TEST_F(TimerQueueTest, ALullLastsUntilTheFirstTimerIsDueThatIsNotIdle) {
    EXPECT_EQ(queue->lullBefore(100ns).end, 100ns);
    addIdler("idler", 10ns);
    EXPECT_EQ(queue->lullBefore(100ns).end, 100ns);
    add("worker", 35ns);
    EXPECT_EQ(queue->lullBefore(100ns).end, 35ns);
    EXPECT_EQ(queue->lullBefore(35ns).end, 35ns);
    EXPECT_EQ(queue->lullBefore(34ns).end, 34ns);
}

TEST_F(TimerQueueTest, ALullEndsWhereAnIdlerHasSomethingToDo) {
    addIdler("idler", 10ns);
    idle = false;
    EXPECT_EQ(queue->lullBefore(100ns).end, 10ns);
}

TEST_F(TimerQueueTest, WhatIsPassedOverIsDueAgainAtItsFirstTimeFromTheEndOn) {
    addIdler("a", 10ns);
    addIdler("b", 7ns);
    ASSERT_TRUE(queue->passOver(queue->lullBefore(40ns)));
    EXPECT_EQ(run(39ns), Names{});
    EXPECT_EQ(run(40ns), Names{"a"});
    EXPECT_EQ(run(42ns), Names{"b"});
    EXPECT_EQ(run(49ns), (Names{"b"}));
    EXPECT_EQ(run(50ns), (Names{"a"}));
}

TEST_F(TimerQueueTest, ALullInWhichATimerWasMadeIsNotPassedOver) {
    addIdler("a", 10ns);
    const auto lull = queue->lullBefore(40ns);
    add("b", 5ns);
    EXPECT_FALSE(queue->passOver(lull));
    EXPECT_EQ(run(10ns), (Names{"b", "a"}));
}

TEST_F(TimerQueueTest, WhoWaitsForTheFrontIsToldOnceWhatWasPassedOver) {
    std::vector<std::optional<Time>> told;
    queue = std::make_shared<TimerQueue>([&](std::optional<Time> due) { told.push_back(due); });
    addIdler("a", 10ns);
    ASSERT_TRUE(queue->passOver(queue->lullBefore(45ns)));
    EXPECT_EQ(told, (std::vector<std::optional<Time>>{10ns, 50ns}));
}

}  // namespace

}  // namespace nearcast
