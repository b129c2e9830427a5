// SPDX-License-Identifier: Apache-2.0
#include "doubles/KeptLines.h"
#include "platform/system/SystemClock.h"
#include "platform/system/TimerService.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

using Task = std::function<void()>;

/// A service whose tasks are kept until the test runs them.
class TimerExecutor : public testing::Test {
protected:
    void dispatchAfter(std::chrono::milliseconds time) {
        SystemClock::sleepUntil(SystemClock::now() + time);
        service->dispatch();
    }
    std::vector<Task> takeTasks() { return std::exchange(tasks, {}); }
    std::shared_ptr<NSTimer> counting() {
        return service->scheduledTimer(1ms, [this](NSTimer&) { ++fired; });
    }

    KeptLines console;
    std::vector<Task> tasks;
    int fired = 0;
    std::optional<TimerService> service{std::in_place, console, TimerService::Loop::application,
                                        [this](Task task) { tasks.push_back(std::move(task)); }};
};

TEST_F(TimerExecutor, RunsAFiringWhenItsTaskIsRun) {
    counting();
    dispatchAfter(2ms);
    EXPECT_EQ(fired, 0);
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerExecutor, HandsOverOneTaskATimerAtATime) {
    counting();
    for (int round = 0; round < 3; ++round) dispatchAfter(2ms);
    ASSERT_EQ(tasks.size(), 1u);
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 1);
    dispatchAfter(2ms);
    EXPECT_EQ(tasks.size(), 1u);
}

TEST_F(TimerExecutor, HandsOverTheNextFiringWhileTheHandlerRuns) {
    service->scheduledTimer(1ms, [this](NSTimer&) {
        ++fired;
        dispatchAfter(3ms);
    });
    dispatchAfter(2ms);
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 1);
    EXPECT_EQ(tasks.size(), 1u);  // what was missed meanwhile, once
}

TEST_F(TimerExecutor, RunsNothingOfATimerThatWasInvalidatedMeanwhile) {
    const auto timer = counting();
    dispatchAfter(2ms);
    timer->invalidate();
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 0);
}

TEST_F(TimerExecutor, RunsATaskOnce) {
    counting();
    dispatchAfter(2ms);
    const Task task = takeTasks().at(0);
    task();
    task();
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerExecutor, GoesOnAfterATaskThatWasDropped) {
    counting();
    dispatchAfter(2ms);
    takeTasks();
    dispatchAfter(2ms);
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerExecutor, PutsWhatAHandlerThrowsOnTheConsole) {
    service->scheduledTimer(1ms, [](NSTimer&) { throw std::runtime_error("broken"); });
    dispatchAfter(2ms);
    for (const Task& task : takeTasks()) EXPECT_NO_THROW(task());
    EXPECT_EQ(console.lines(), std::vector<std::string>{"The handler of a timer failed: broken"});
}

TEST_F(TimerExecutor, PutsWhatTheExecutorThrowsOnTheConsoleAndGoesOn) {
    bool broken = true;
    service.emplace(console, TimerService::Loop::application, [&](Task task) {
        if (broken) throw std::runtime_error("no room");
        task();
    });
    counting();
    dispatchAfter(2ms);
    EXPECT_EQ(console.lines(), std::vector<std::string>{"The handler of the timers' executor failed: no room"});
    broken = false;
    dispatchAfter(2ms);
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerExecutor, RunsNothingAfterTheServiceIsDestroyed) {
    counting();
    dispatchAfter(2ms);
    service.reset();
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 0);
}

TEST_F(TimerExecutor, IsWaitedForWhenTheServiceIsDestroyedWhileATaskRuns) {
    std::promise<void> begun;
    std::promise<void> end;
    bool ended = false;
    service->scheduledTimer(1ms, [&](NSTimer&) {
        begun.set_value();
        end.get_future().wait();
        ended = true;
    });
    dispatchAfter(2ms);
    std::thread runner([task = takeTasks().at(0)] { task(); });
    begun.get_future().wait();
    std::thread other([&] { end.set_value(); });
    service.reset();
    EXPECT_TRUE(ended);
    runner.join();
    other.join();
}

TEST_F(TimerExecutor, MayDestroyTheServiceInATask) {
    service->scheduledTimer(1ms, [this](NSTimer&) {
        service.reset();
        ++fired;
    });
    dispatchAfter(2ms);
    for (const Task& task : takeTasks()) task();
    EXPECT_EQ(fired, 1);
    EXPECT_FALSE(service);
}

TEST_F(TimerExecutor, IsFedByTheServicesOwnThread) {
    std::promise<std::thread::id> handedOver;
    std::promise<void> ran;
    service.emplace(console, TimerService::Loop::ownThread, [&, first = true](Task task) mutable {
        if (!std::exchange(first, false)) return;
        handedOver.set_value(std::this_thread::get_id());
        task();
        ran.set_value();
    });
    counting();
    EXPECT_NE(handedOver.get_future().get(), std::this_thread::get_id());
    ran.get_future().wait();
    service.reset();
    EXPECT_EQ(fired, 1);
}

}  // namespace

}  // namespace nearcast
