// SPDX-License-Identifier: Apache-2.0
#include "platform/system/WakeUp.h"

#include "doubles/MadeDescriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <thread>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

bool readable(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
}

TEST(WakeUp, WaitsForItsAlarm) {
    WakeUp wakeUp;
    const auto moment = SystemClock::now() + 2ms;
    wakeUp.setAlarm(moment);
    wakeUp.wait();
    EXPECT_GE(SystemClock::now(), moment);
    EXPECT_TRUE(readable(wakeUp.alarmDescriptor()));
    EXPECT_TRUE(wakeUp.takeAlarm());
    EXPECT_FALSE(wakeUp.takeAlarm());
    EXPECT_FALSE(readable(wakeUp.alarmDescriptor()));
    EXPECT_FALSE(wakeUp.takeWake());
}

TEST(WakeUp, RingsAtOnceForAMomentThatHasPassed) {
    WakeUp wakeUp;
    for (const auto moment : {SystemClock::now(), SystemClock::Time(0), SystemClock::Time(-5s)}) {
        wakeUp.setAlarm(moment);
        wakeUp.wait();
        EXPECT_TRUE(wakeUp.takeAlarm());
    }
}

TEST(WakeUp, ForgetsAnAlarmThatIsTakenBack) {
    WakeUp wakeUp;
    wakeUp.setAlarm(SystemClock::Time(1));
    wakeUp.wait();
    wakeUp.setAlarm(std::nullopt);
    EXPECT_FALSE(readable(wakeUp.alarmDescriptor()));
}

TEST(WakeUp, KeepsACallForTheNextWait) {
    WakeUp wakeUp;
    wakeUp.wake();
    wakeUp.wake();
    wakeUp.wait();
    EXPECT_TRUE(wakeUp.takeWake());
    EXPECT_FALSE(wakeUp.takeWake());
}

TEST(WakeUp, IsWokenByAnotherThread) {
    WakeUp wakeUp;
    wakeUp.setAlarm(SystemClock::now() + 1h);
    std::thread other([&] { wakeUp.wake(); });
    wakeUp.wait();
    EXPECT_TRUE(wakeUp.takeWake());
    other.join();
}

TEST(WakeUp, TellsWhichOfTwoDescriptorsHasSomething) {
    WakeUp wakeUp;
    WakeUp quiet;
    WakeUp loud;
    loud.setAlarm(SystemClock::Time(1));
    const auto first = wakeUp.wait(loud.alarmDescriptor(), POLLIN, quiet.alarmDescriptor());
    EXPECT_TRUE(first.other);
    EXPECT_FALSE(first.another);
    const auto second = wakeUp.wait(quiet.alarmDescriptor(), POLLIN, loud.alarmDescriptor());
    EXPECT_FALSE(second.other);
    EXPECT_TRUE(second.another);
    EXPECT_FALSE(second.alarm || second.wake || second.broken);
}

TEST(WakeUp, EndsAPauseWithAnAlarm) {
    WakeUp wakeUp;
    wakeUp.setAlarm(SystemClock::Time(1));
    EXPECT_TRUE(wakeUp.pause(1h).alarm);
}

TEST(WakeUp, EndsAPauseWithACall) {
    WakeUp wakeUp;
    wakeUp.wake();
    EXPECT_TRUE(wakeUp.pause(1h).wake);
}

TEST(WakeUp, EndsAPauseByItself) {
    WakeUp wakeUp;
    const WakeUp::Found found = wakeUp.pause(1ms);
    EXPECT_FALSE(found.alarm);
    EXPECT_FALSE(found.wake);
}

TEST(WakeUp, WaitsForAnotherDescriptorToo) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    WakeUp wakeUp;
    wakeUp.wait(ends[0]);
    EXPECT_FALSE(wakeUp.takeWake());
    close(ends[0]);
    close(ends[1]);
}

TEST(WakeUp, SaysThatItsDescriptorsWereClosed) {
    const MadeDescriptors made;
    WakeUp wakeUp;
    made.closeAll();
    EXPECT_TRUE(wakeUp.wait().broken);
}

TEST(WakeUp, EndsAPauseOnceItsDescriptorsWereClosed) {
    const MadeDescriptors made;
    WakeUp wakeUp;
    made.closeAll();
    EXPECT_TRUE(wakeUp.pause(1h).broken);
}

TEST(WakeUp, TakesWhatItHasFound) {
    WakeUp wakeUp;
    EXPECT_TRUE(wakeUp.take({}));
    wakeUp.setAlarm(SystemClock::Time(1));
    wakeUp.wake();
    wakeUp.wait();
    EXPECT_TRUE(wakeUp.take({.alarm = true, .wake = true}));
    EXPECT_FALSE(wakeUp.takeAlarm());
    EXPECT_FALSE(wakeUp.takeWake());
}

TEST(WakeUp, FindsNoFaultWithAnAlarmThatWasSetAnewMeanwhile) {
    WakeUp wakeUp;
    wakeUp.setAlarm(SystemClock::Time(1));
    const WakeUp::Found found = wakeUp.wait();
    wakeUp.setAlarm(SystemClock::now() + 1h);
    EXPECT_TRUE(found.alarm);
    EXPECT_TRUE(wakeUp.take(found));
}

TEST(WakeUp, CannotTakeWhatIsClosed) {
    const MadeDescriptors made;
    WakeUp wakeUp;
    made.closeAll();
    EXPECT_FALSE(wakeUp.take({.broken = true}));
    EXPECT_FALSE(wakeUp.take({.alarm = true}));
    EXPECT_FALSE(wakeUp.take({.wake = true}));
}

TEST(WakeUp, CannotTakeWhatIsAnothersFile) {
    const MadeDescriptors made;
    WakeUp wakeUp;
    made.closeAll();
    const Descriptor first(open("/dev/null", O_RDONLY | O_CLOEXEC), "no file");
    const Descriptor second(open("/dev/null", O_RDONLY | O_CLOEXEC), "no file");
    const WakeUp::Found found = wakeUp.wait();
    EXPECT_FALSE(found.broken);
    EXPECT_FALSE(wakeUp.take({.alarm = found.alarm}));
    EXPECT_FALSE(wakeUp.take({.wake = found.wake}));
}

TEST(WakeUp, SaysThatTheOtherDescriptorWasClosed) {
    WakeUp wakeUp;
    const int closed = dup(STDERR_FILENO);
    close(closed);
    EXPECT_TRUE(wakeUp.wait(closed).broken);
    wakeUp.wake();
    EXPECT_FALSE(wakeUp.wait().broken) << "its own are whole";
}

}  // namespace

}  // namespace nearcast
