// SPDX-License-Identifier: Apache-2.0
#include "contract/TimerBench.h"
#include "support/AtomicShared.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

constexpr auto interval = 3ms;

struct Kind {
    const char* name;
    std::unique_ptr<TimerBench> (*make)();
};

/// What the manager may expect of timers and of the clock, wherever they come from.
class Timers : public testing::TestWithParam<Kind> {
protected:
    /// Handlers may run until then; they use nothing of the test's body.
    void TearDown() override { owner_.reset(); }

    TimerBench& bench() { return bench_; }
    PlatformServices& platform() { return bench_.platform(); }
    NSDate::Duration now() { return platform().date().sinceStart(); }
    std::shared_ptr<NSTimer> timer(const std::string& name, std::chrono::nanoseconds every = interval) {
        return platform().scheduledTimer(every, [this, name](NSTimer&) { bench_.note(name); });
    }
    /// Lets so many firings of a timer of the usual interval pass.
    void passFirings(std::size_t count) {
        const auto marker = timer("marker");
        while (bench_.notesOf("marker") < count) ASSERT_TRUE(bench_.awaitNotes(bench_.notes().size() + 1));
        marker->invalidate();
    }

private:
    std::unique_ptr<TimerBench> owner_ = GetParam().make();
    TimerBench& bench_ = *owner_;
};

TEST_P(Timers, FireFirstAfterOneIntervalAndNotBefore) {
    const auto start = now();
    timer("a");
    ASSERT_TRUE(bench().awaitNotes(1));
    EXPECT_GE(bench().notes()[0].date.sinceStart() - start, interval);
}

TEST_P(Timers, GoOnAtMultiplesOfTheInterval) {
    const auto start = now();
    timer("a");
    ASSERT_TRUE(bench().awaitNotes(3));
    const auto notes = bench().notes();
    for (int firing = 0; firing < 3; ++firing) {
        EXPECT_GE(notes[static_cast<std::size_t>(firing)].date.sinceStart() - start, (firing + 1) * interval);
    }
}

TEST_P(Timers, FireAtOnceOnTheCallingThreadWhenFiredByHand) {
    const auto made = timer("a", 1h);
    made->fire();
    const auto notes = bench().notes();
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_EQ(notes[0].thread, std::this_thread::get_id());
}

TEST_P(Timers, KeepTheirScheduleWhenFiredByHand) {
    const auto start = now();
    const auto made = timer("a");
    made->fire();
    ASSERT_TRUE(bench().awaitNotes(2));
    EXPECT_GE(bench().notes()[1].date.sinceStart() - start, interval);
}

TEST_P(Timers, PassWhatAHandlerThrowsToWhoFiresByHand) {
    const auto made = platform().scheduledTimer(1h, [](NSTimer&) { throw std::runtime_error("broken"); });
    EXPECT_THROW(made->fire(), std::runtime_error);
    EXPECT_TRUE(bench().console.lines().empty());
}

TEST_P(Timers, PutWhatAHandlerThrowsOnTheConsoleAndGoOn) {
    platform().scheduledTimer(interval, [this](NSTimer&) {
        bench().note("a");
        throw std::runtime_error("broken");
    });
    ASSERT_TRUE(bench().awaitNotes(2));
    const auto lines = bench().console.lines();
    ASSERT_GE(lines.size(), 1u);
    EXPECT_EQ(lines[0], "The handler of a timer failed: broken");
}

TEST_P(Timers, EndWhenTheirHandlerInvalidatesThem) {
    platform().scheduledTimer(interval, [this](NSTimer& timer) {
        bench().note("a");
        timer.invalidate();
    });
    passFirings(3);
    EXPECT_EQ(bench().notesOf("a"), 1u);
}

TEST_P(Timers, MayBeInvalidatedByAnotherThreadWhileTheyFire) {
    platform().scheduledTimer(interval, [this](NSTimer& timer) {
        std::thread([&timer] { timer.invalidate(); }).join();
        bench().note("a");
    });
    passFirings(3);
    EXPECT_EQ(bench().notesOf("a"), 1u);
}

TEST_P(Timers, DoNotFireOnceTheyAreInvalidated) {
    const auto ended = timer("ended");
    ended->invalidate();
    passFirings(3);
    ended->fire();
    EXPECT_EQ(bench().notesOf("ended"), 0u);
}

/// The older one's handler ends the younger one, which is due by then.
TEST_P(Timers, DoNotFireWhatAnotherHandlerHasInvalidated) {
    const auto younger = std::make_shared<AtomicShared<NSTimer>>();
    platform().scheduledTimer(interval, [this, younger](NSTimer&) {
        const auto other = younger->load();
        if (!other) return;
        other->invalidate();
        bench().note("older");
    });
    younger->store(platform().scheduledTimer(interval, [this](NSTimer&) {
        if (bench().notesOf("older") > 0) bench().note("younger");
    }));
    ASSERT_TRUE(bench().awaitNotes(3));
    EXPECT_EQ(bench().notesOf("younger"), 0u);
}

TEST_P(Timers, GoOnWhenNobodyRefersToThem) {
    timer("a").reset();
    EXPECT_TRUE(bench().awaitNotes(2));
}

TEST_P(Timers, FireTheOlderFirstWhenTwoAreDueTogether) {
    timer("older");
    timer("younger");
    ASSERT_TRUE(bench().awaitNotes(2));
    const auto notes = bench().notes();
    EXPECT_EQ(notes[0].name, "older");
    EXPECT_EQ(notes[1].name, "younger");
}

TEST_P(Timers, MayBeMadeByAHandler) {
    platform().scheduledTimer(interval, [this](NSTimer& first) {
        first.invalidate();
        timer("second");
        bench().note("first");
    });
    ASSERT_TRUE(bench().awaitNotes(2));
    const auto notes = bench().notes();
    EXPECT_EQ(notes[1].name, "second");
    EXPECT_GE(notes[1].date.sinceStart() - notes[0].date.sinceStart(), 0ns);
}

TEST_P(Timers, LetGoOfWhatTheirHandlerHoldsWhenTheyAreInvalidated) {
    const auto held = std::make_shared<int>(0);
    const auto made = platform().scheduledTimer(1h, [held](NSTimer&) {});
    EXPECT_EQ(held.use_count(), 2);
    made->invalidate();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_P(Timers, MayBeMadeAndEndedByManyThreads) {
    std::vector<std::thread> crowd;
    crowd.reserve(3);
    for (int thread = 0; thread < 3; ++thread) {
        crowd.emplace_back([this] {
            for (int round = 0; round < 40; ++round) timer("crowd", 50us)->invalidate();
        });
    }
    timer("a");
    EXPECT_TRUE(bench().awaitNotes(3));
    for (std::thread& thread : crowd) thread.join();
    const auto before = bench().notesOf("crowd");
    passFirings(2);
    EXPECT_EQ(bench().notesOf("crowd"), before);
}

TEST_P(Timers, StandOnAClockThatNeverGoesBack) {
    timer("a");
    auto last = now();
    for (int reading = 0; reading < 300; ++reading) {
        const auto next = now();
        ASSERT_GE(next, last);
        last = next;
    }
    ASSERT_TRUE(bench().awaitNotes(2));
    EXPECT_GE(now(), last);
}

TEST_P(Timers, StandOnAClockOnWhichASleepLastsAsLongAsAskedFor) {
    const auto start = now();
    platform().usleep(interval);
    EXPECT_GE(now() - start, interval);
    platform().usleep(0us);
}

INSTANTIATE_TEST_SUITE_P(Every, Timers,
                         testing::Values(Kind{"OnTheirOwnThread", timersOnTheirOwnThread},
                                         Kind{"OnAnExecutor", timersOnAnExecutor},
                                         Kind{"OnTheApplicationsLoop", timersOnTheApplicationsLoop},
                                         Kind{"OnVirtualTime", timersOnVirtualTime},
                                         Kind{"OnADrivenTimeline", timersOnADrivenTimeline}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace

}  // namespace nearcast::contract
