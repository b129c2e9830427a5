// SPDX-License-Identifier: Apache-2.0
#include "platform/system/TimerService.h"

#include "doubles/KeptLines.h"
#include "doubles/MadeDescriptors.h"
#include "platform/system/SystemClock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

using Lines = std::vector<std::string>;

constexpr auto quick = 2ms;
constexpr auto deadline = 20s;  // of tests that fail; a good one never waits for it

bool readable(int descriptor, std::chrono::milliseconds wait = 0ms) {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, static_cast<int>(wait.count())) == 1;
}

TEST(TimerService, HasNoDescriptorAndNothingToDispatchWithAThreadOfItsOwn) {
    KeptLines console;
    TimerService service(console);
    EXPECT_EQ(service.descriptor(), -1);
    service.dispatch();
}

TEST(TimerService, FiresOnAThreadOfItsOwnThatTakesNoSignals) {
    KeptLines console;
    std::promise<std::pair<std::thread::id, sigset_t>> fired;
    TimerService service(console);
    service.scheduledTimer(quick, [&](NSTimer& timer) {
        timer.invalidate();
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        fired.set_value({std::this_thread::get_id(), blocked});
    });
    const auto [thread, blocked] = fired.get_future().get();
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 1);
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(sigismember(&own, SIGTERM), 0);
}

TEST(TimerService, WaitsForAFiringThatIsUnderWayWhenItIsDestroyed) {
    KeptLines console;
    std::promise<void> begun;
    std::promise<void> end;
    bool ended = false;
    std::optional<TimerService> service(std::in_place, console);
    service->scheduledTimer(quick, [&](NSTimer&) {
        begun.set_value();
        end.get_future().wait();
        ended = true;
    });
    begun.get_future().wait();
    std::thread other([&] { end.set_value(); });
    service.reset();
    EXPECT_TRUE(ended);
    other.join();
}

TEST(TimerService, EndsItsTimersWhenItIsDestroyed) {
    KeptLines console;
    int fired = 0;
    std::shared_ptr<NSTimer> timer;
    {
        TimerService service(console);
        timer = service.scheduledTimer(1h, [&](NSTimer&) { ++fired; });
    }
    timer->fire();
    timer->invalidate();
    EXPECT_EQ(fired, 0);
}

TEST(TimerService, MayBeDestroyedByAHandlerOnItsOwnThread) {
    KeptLines console;
    auto service = std::make_unique<TimerService>(console);
    std::atomic<bool> done{false};
    service->scheduledTimer(quick, [&](NSTimer&) {
        service.reset();
        done = true;
        done.notify_one();
    });
    done.wait(false);
    EXPECT_TRUE(console.lines().empty());
}

TEST(TimerService, EndsItsThreadWithALineWhereItsDescriptorsWereClosed) {
    KeptLines console;
    const MadeDescriptors made;
    TimerService service(console);
    service.scheduledTimer(quick, [&](NSTimer& timer) {
        timer.invalidate();
        made.closeAll();
    });
    console.await(1);
    EXPECT_EQ(console.lines(), Lines{"The thread of the timers has ended: its descriptors were closed"});
}

/// The next file that is opened gets the number of one that was closed. This one is always readable.
TEST(TimerService, EndsItsThreadWithALineWhereItsDescriptorsAreAnothersFiles) {
    for (int files = 1; files <= 2; ++files) {
        KeptLines console;
        const MadeDescriptors made;
        TimerService service(console);
        service.scheduledTimer(quick, [&](NSTimer& timer) {
            timer.invalidate();
            made.closeAll();
            for (int i = 0; i < files; ++i) open("/dev/null", O_RDONLY | O_CLOEXEC);
        });
        console.await(1);
        EXPECT_EQ(console.lines(), Lines{"The thread of the timers has ended: its descriptors were closed"});
    }
}

class OwnLoop : public testing::Test {
protected:
    /// Dispatches once a timer is due.
    void dispatchWhenDue() {
        ASSERT_TRUE(readable(service.descriptor(), deadline));
        service.dispatch();
    }

    KeptLines console;
    TimerService service{console, TimerService::Loop::application};
};

TEST_F(OwnLoop, IsReadableWhenATimerIsDueAndNoLongerOnceItHasFired) {
    int fired = 0;
    EXPECT_FALSE(readable(service.descriptor()));
    const auto start = SystemClock::now();
    service.scheduledTimer(1h, [](NSTimer&) {});
    service.scheduledTimer(quick, [&](NSTimer& timer) {
        ++fired;
        timer.invalidate();
    });
    dispatchWhenDue();
    EXPECT_EQ(fired, 1);
    EXPECT_GE(SystemClock::now() - start, quick);
    EXPECT_FALSE(readable(service.descriptor()));
}

TEST_F(OwnLoop, IsNotReadableForATimerThatIsInvalidated) {
    const auto timer = service.scheduledTimer(1ns, [](NSTimer&) {});
    EXPECT_TRUE(readable(service.descriptor(), deadline));
    timer->invalidate();
    EXPECT_FALSE(readable(service.descriptor()));
}

TEST_F(OwnLoop, FiresOnTheThreadThatDispatches) {
    std::thread::id thread;
    service.scheduledTimer(quick, [&](NSTimer&) { thread = std::this_thread::get_id(); });
    dispatchWhenDue();
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(OwnLoop, FiresOnceForAllThatWasMissed) {
    int fired = 0;
    service.scheduledTimer(1ms, [&](NSTimer&) { ++fired; });
    SystemClock::sleepUntil(SystemClock::now() + 6ms);
    service.dispatch();
    EXPECT_EQ(fired, 1);
}

TEST_F(OwnLoop, CountsWhatIsMissedWhileAnotherHandlerRunsToTheSameFiring) {
    constexpr auto interval = 10ms;
    SystemClock::Time slowEnded{};
    std::vector<SystemClock::Time> fired;
    service.scheduledTimer(2ms, [&](NSTimer& timer) {
        timer.invalidate();
        SystemClock::sleepUntil(SystemClock::now() + 3 * interval);
        slowEnded = SystemClock::now();
    });
    const auto before = SystemClock::now();
    service.scheduledTimer(interval, [&](NSTimer&) { fired.push_back(SystemClock::now()); });
    const auto after = SystemClock::now();
    SystemClock::sleepUntil(after + interval);  // both are due, the slow one first
    service.dispatch();
    ASSERT_EQ(fired.size(), 1u);
    while (fired.size() < 2) dispatchWhenDue();
    const auto missed = (slowEnded - after) / interval;  // at the least
    EXPECT_GE(fired[1], before + (missed + 1) * interval);
}

TEST_F(OwnLoop, MayBeDestroyedByAHandler) {
    auto mortal = std::make_unique<TimerService>(console, TimerService::Loop::application);
    int late = 0;
    auto* const same = mortal.get();
    same->scheduledTimer(1ns, [&](NSTimer&) { mortal.reset(); });
    same->scheduledTimer(1ns, [&](NSTimer&) { ++late; });
    ASSERT_TRUE(readable(same->descriptor(), deadline));
    same->dispatch();
    EXPECT_EQ(mortal, nullptr);
    EXPECT_EQ(late, 0);
}

}  // namespace

}  // namespace nearcast
