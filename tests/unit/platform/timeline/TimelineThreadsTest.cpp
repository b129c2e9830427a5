// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManualPace.h"
#include "support/Holding.h"
#include "unit/platform/timeline/TimelineFixture.h"

#include <atomic>
#include <future>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace nearcast {

namespace {

constexpr auto deadline = 20s;  // of tests that fail; a good one never waits for it

/// A timeline whose pace the test sets, so that its driver can be another thread.
class PacedTimelineTest : public testing::Test {
protected:
    void SetUp() override {
        auto owned = std::make_unique<ManualPace>();
        pace = owned.get();
        owner = std::make_shared<Timeline>(console, std::move(owned));
        timeline = owner.get();
    }

    /// Drives the timeline on a thread of its own for a scope: what its handlers use is made before.
    class Driven {
    public:
        explicit Driven(PacedTimelineTest& test) : test_(test) { test_.timeline->driveFromThread(); }
        ~Driven() { test_.owner.reset(); }
        Driven(const Driven&) = delete;
        Driven& operator=(const Driven&) = delete;

    private:
        PacedTimelineTest& test_;
    };

    KeptLines console;
    Happenings happenings;
    ManualPace* pace = nullptr;
    std::shared_ptr<Timeline> owner;
    Timeline* timeline = nullptr;
};

/// A promise to the test that another thread keeps.
template <class Value>
::testing::AssertionResult ready(const std::future<Value>& future) {
    if (future.wait_for(deadline) == std::future_status::ready) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "nothing came";
}

TEST_F(PacedTimelineTest, WaitsForItsPace) {
    std::promise<Timeline::Time> fired;
    timeline->scheduledTimer(5us, [&](NSTimer& timer) {
        timer.invalidate();
        fired.set_value(timeline->now());
    });
    const Driven driven(*this);
    auto when = fired.get_future();
    pace->awaitWaiting(5us);
    pace->set(5us);
    ASSERT_TRUE(ready(when));
    EXPECT_EQ(when.get(), 5us);
}

TEST_F(PacedTimelineTest, NoticesATimerThatIsMadeWhileItWaits) {
    timeline->scheduledTimer(100us, [](NSTimer&) {});
    const Driven driven(*this);
    pace->awaitWaiting(100us);
    timeline->scheduledTimer(5us, [](NSTimer&) {});
    pace->awaitWaiting(5us);
}

TEST_F(PacedTimelineTest, RefusesASleepOnAnotherThreadThatHoldsWhatTheDriverMayWaitFor) {
    timeline->scheduledTimer(100us, [](NSTimer&) {});
    const Driven driven(*this);
    pace->awaitWaiting(100us);
    EXPECT_TRUE(timeline->canSleep());
    const Holding holding;
    EXPECT_FALSE(timeline->canSleep());
    EXPECT_THROW(timeline->sleep(5us), std::system_error);
    EXPECT_THROW(timeline->runUntil(5us), std::system_error);
    EXPECT_NO_THROW(timeline->sleep(0us)) << "there is nothing to wait for";
}

TEST_F(PacedTimelineTest, LetsAThreadThatHoldsSomethingSleepWhereItDrivesItself) {
    const Holding holding;
    EXPECT_TRUE(timeline->canSleep());
    pace->set(5us);
    EXPECT_NO_THROW(timeline->sleep(5us));
    EXPECT_EQ(timeline->now(), 5us);
}

TEST_F(PacedTimelineTest, GoesOnWithTheClockWhileItWaits) {
    timeline->scheduledTimer(100us, [](NSTimer&) {});
    const Driven driven(*this);
    pace->awaitWaiting(100us);
    pace->set(60us);
    EXPECT_EQ(timeline->now(), 60us);
    timeline->scheduledTimer(30us, [](NSTimer&) {});  // due one interval from now, not from the last stop
    pace->awaitWaiting(90us);
    EXPECT_EQ(timeline->now(), 60us);
}

TEST_F(PacedTimelineTest, DoesNotGoBeyondWhatIsDueNext) {
    std::promise<void> begun;
    std::promise<void> end;
    happenings.add(5us, [&] {
        begun.set_value();
        end.get_future().wait();
    });
    timeline->setSource(&happenings);
    const Driven driven(*this);
    pace->set(50us);  // late: the clock stays where the happening is
    begun.get_future().wait();
    EXPECT_EQ(timeline->now(), 5us);
    end.set_value();
}

TEST_F(PacedTimelineTest, SleepsOnAnotherThreadAsLongAsAskedFor) {
    const Driven driven(*this);
    pace->awaitWaiting(Timeline::forever);
    pace->set(30us);
    auto slept = std::async(std::launch::async, [&] {
        timeline->sleep(100us);
        return timeline->now();
    });
    pace->awaitWaiting(130us);
    pace->set(130us);
    ASSERT_TRUE(ready(slept));
    EXPECT_EQ(slept.get(), 130us);
}

TEST_F(PacedTimelineTest, SleepsNotAtAllForNoTimeWhileTheClockIsBetweenTwoStops) {
    const Driven driven(*this);
    pace->awaitWaiting(Timeline::forever);
    pace->set(30us);
    timeline->sleep(0us);
    EXPECT_EQ(timeline->now(), 30us);
}

/// The clock may move between the moment at which a sleep begins and the moment at which it is waited for.
TEST_F(PacedTimelineTest, SleepsNoLongerWhenTheClockMovesAsTheSleepBegins) {
    timeline->scheduledTimer(5us, [](NSTimer& timer) { timer.invalidate(); });
    const Driven driven(*this);
    pace->awaitWaiting(5us);
    pace->onNextWake([&] {
        pace->set(5us);
        while (timeline->now() < 5us) std::this_thread::yield();
    });
    auto slept = std::async(std::launch::async, [&] { timeline->sleep(100us); });
    pace->awaitWaiting(100us);
    pace->set(100us);
    const bool inTime = static_cast<bool>(ready(slept));
    pace->set(Timeline::forever);
    EXPECT_TRUE(inTime);
}

TEST_F(PacedTimelineTest, SleepsInsideAHappeningOfItsOwnThread) {
    std::promise<Timeline::Time> woken;
    happenings.add(0us, [&] {
        timeline->sleep(10us);
        woken.set_value(timeline->now());
    });
    timeline->setSource(&happenings);
    pace->set(10us);
    const Driven driven(*this);
    auto when = woken.get_future();
    ASSERT_TRUE(ready(when));
    EXPECT_EQ(when.get(), 10us);
}

TEST_F(PacedTimelineTest, PutsWhatAHappeningThrowsOnTheConsoleWhenItsOwnThreadDrives) {
    happenings.add(0us, [] { throw std::runtime_error("broken"); });
    std::promise<void> went;
    happenings.add(1us, [&] { went.set_value(); });
    timeline->setSource(&happenings);
    pace->set(1us);
    const Driven driven(*this);
    ASSERT_TRUE(ready(went.get_future()));
    EXPECT_EQ(console.lines(), std::vector<std::string>{"The handler of a happening failed: broken"});
}

TEST_F(PacedTimelineTest, IsDrivenByOneThreadAtATime) {
    std::atomic<bool> elsewhere{false};
    std::atomic<std::thread::id> driver{};
    timeline->scheduledTimer(1us, [&](NSTimer&) {
        if (driver.load() != std::this_thread::get_id()) elsewhere = true;
    });
    auto run = std::async(std::launch::async, [&] {
        driver = std::this_thread::get_id();
        return timeline->runUntil(200us);
    });
    pace->awaitWaiting(1us);
    std::promise<void> waits;
    pace->onNextWake([&] { waits.set_value(); });
    auto slept = std::async(std::launch::async, [&] { timeline->sleep(100us); });
    ASSERT_TRUE(ready(waits.get_future()));
    for (auto time = 1us; time <= 200us; ++time) pace->set(time);
    ASSERT_TRUE(ready(run));
    ASSERT_TRUE(ready(slept));
    EXPECT_FALSE(elsewhere);
}

TEST_F(PacedTimelineTest, LetsASleeperDriveOnWhenTheDriverHasEnded) {
    auto run = std::async(std::launch::async, [&] { return timeline->runUntil(50us); });
    pace->awaitWaiting(50us);
    auto slept = std::async(std::launch::async, [&] { timeline->sleep(100us); });
    pace->set(50us);
    ASSERT_TRUE(ready(run));
    EXPECT_EQ(run.get(), Timeline::End::reached);
    pace->set(150us);
    ASSERT_TRUE(ready(slept));
}

TEST_F(PacedTimelineTest, InterruptsARunThatWaitsForAnotherDriver) {
    auto slept = std::async(std::launch::async, [&] { timeline->sleep(100us); });
    pace->awaitWaiting(100us);
    auto run = std::async(std::launch::async, [&] { return timeline->runUntil(50us); });
    pace->awaitWaiting(50us);  // the sleeper drives, and stops where the run ends
    timeline->interrupt();
    ASSERT_TRUE(ready(run));
    EXPECT_EQ(run.get(), Timeline::End::interrupted);
    pace->set(100us);
    ASSERT_TRUE(ready(slept));
}

TEST_F(PacedTimelineTest, EndsItsThreadAndASleepOnItWhenItIsDestroyed) {
    std::promise<void> begun;
    bool ended = false;
    happenings.add(0us, [&] {
        begun.set_value();
        timeline->sleep(1h);
        ended = true;
    });
    timeline->setSource(&happenings);
    {
        const Driven driven(*this);
        begun.get_future().wait();
    }
    EXPECT_TRUE(ended);
}

TEST_F(PacedTimelineTest, TakesTimersFromManyThreadsWhileItRuns) {
    std::atomic<int> firings{0};
    const Driven driven(*this);
    std::vector<std::thread> crowd;
    crowd.reserve(3);
    for (int thread = 0; thread < 3; ++thread) {
        crowd.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const auto before = firings.load();
                const auto timer = timeline->scheduledTimer(1us, [&](NSTimer&) { ++firings; });
                while (firings.load() == before) {
                    pace->set(timeline->now() + 1us);
                    std::this_thread::yield();
                }
                timer->invalidate();
            }
        });
    }
    for (std::thread& thread : crowd) thread.join();
    EXPECT_GE(firings, 50);
}

/// A pace that cannot wait.
class BrokenPace : public Pace {
public:
    bool waitUntil(std::chrono::microseconds /*time*/) override { throw std::runtime_error("the pace is broken"); }
    void wake() override {}
};

TEST(BrokenPace, EndsARunWithWhatItThrows) {
    KeptLines console;
    const auto timeline = std::make_shared<Timeline>(console, std::make_unique<BrokenPace>());
    EXPECT_EQ(timeline->failure(), "");
    EXPECT_THROW(timeline->runUntil(5us), std::runtime_error);
    EXPECT_EQ(timeline->failure(), "the pace is broken");
    EXPECT_EQ(timeline->now(), 0us);
}

TEST(BrokenPace, EndsTheDrivingThreadWithOneLine) {
    KeptLines console;
    auto timeline = std::make_shared<Timeline>(console, std::make_unique<BrokenPace>());
    timeline->driveFromThread();
    console.await(1);
    EXPECT_EQ(timeline->failure(), "the pace is broken");
    EXPECT_THROW(timeline->sleep(5us), std::runtime_error) << "nobody moves the clock any more";
    timeline.reset();
    EXPECT_EQ(console.lines().size(), 1U);
}

}  // namespace

}  // namespace nearcast
