// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"
#include "platform/system/SystemClock.h"
#include "platform/system/TimerService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <new>
#include <string_view>

namespace nearcast {
namespace {

using namespace std::chrono_literals;

/// There may be no memory to keep lines.
class NoConsole : public Console {
public:
    void NSLog(std::string_view /*line*/) noexcept override {}
};

void runAtOnce(const std::function<void()>& task) { task(); }

constexpr std::uint64_t enough = 8;  ///< more allocations than a firing has

class TimerAllocation : public testing::Test {
protected:
    /// A timer that fires after a firing of it, whose n-th allocation fails.
    static void fireOnAfterFailure(std::uint64_t n, const TimerService::Executor& executor) {
        NoConsole console;
        TimerService service(console, TimerService::Loop::application, executor);
        int fired = 0;
        service.scheduledTimer(1ms, [&](NSTimer&) { ++fired; });
        SystemClock::sleepUntil(SystemClock::now() + 2ms);
        {
            const allocation::Failure failure(n);
            EXPECT_NO_THROW(service.dispatch()) << n;
        }
        fired = 0;
        SystemClock::sleepUntil(SystemClock::now() + 2ms);
        service.dispatch();
        EXPECT_EQ(fired, 1) << n;
    }
};

TEST_F(TimerAllocation, ATimerOfAnExecutorFiresOnAfterAFiringForWhichThereWasNoMemory) {
    for (std::uint64_t n = 1; n <= enough; ++n) fireOnAfterFailure(n, runAtOnce);
}

TEST_F(TimerAllocation, ATimerOfTheApplicationsLoopFiresOnAfterAFiringForWhichThereWasNoMemory) {
    for (std::uint64_t n = 1; n <= enough; ++n) fireOnAfterFailure(n, nullptr);
}

TEST_F(TimerAllocation, ATimerOnAThreadOfItsOwnFiresOnWhileThereIsNoMemoryAtAll) {
    NoConsole console;
    std::atomic<int> fired{0};
    TimerService service(console);
    service.scheduledTimer(20ms, [&](NSTimer&) {
        ++fired;
        fired.notify_all();
    });
    const auto awaitOneMore = [&] {
        const int before = fired;
        fired.wait(before);
    };
    {
        const allocation::Failure failure(1, allocation::Failing::fromThen);
        awaitOneMore();
        awaitOneMore();
    }
    awaitOneMore();
}

TEST_F(TimerAllocation, ATimerThatFindsNoMemoryIsNotMadeAndTheNextOneIs) {
    allocation::failEachAllocation([](std::uint64_t n, allocation::Failing failing) {
        NoConsole console;
        TimerService service(console, TimerService::Loop::application);
        int fired = 0;
        const NSTimer::Handler handler = [&](NSTimer&) { ++fired; };
        bool failed = false;
        {
            const allocation::Failure failure(n, failing);
            try {
                service.scheduledTimer(1ms, handler);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        }
        service.scheduledTimer(1ms, handler);
        SystemClock::sleepUntil(SystemClock::now() + 2ms);
        service.dispatch();
        EXPECT_EQ(fired, failed ? 1 : 2) << n;
        return failed;
    });
}

}  // namespace
}  // namespace nearcast
