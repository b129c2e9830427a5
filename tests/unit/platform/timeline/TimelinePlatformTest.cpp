// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/TimelinePlatform.h"

#include "doubles/KeptLines.h"
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

class WithoutRadio : public TimelinePlatform {
public:
    using TimelinePlatform::TimelinePlatform;
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& /*delegate*/) override {
        return nullptr;
    }
};

class TimelinePlatformTest : public ::testing::Test {
protected:
    KeptLines console;
    JSONSerialization JSON;
    WithoutRadio platform{console, JSON, nullptr};
};

TEST_F(TimelinePlatformTest, TellsTheDateByItsTimeline) {
    EXPECT_EQ(platform.date().sinceStart(), microseconds(0));
    platform.timeline().runUntil(milliseconds(1'500));
    EXPECT_EQ(platform.date().sinceStart(), milliseconds(1'500));
}

TEST_F(TimelinePlatformTest, SleepsByMovingTheClock) {
    platform.usleep(microseconds(250));
    EXPECT_EQ(platform.date().sinceStart(), microseconds(250));
}

TEST_F(TimelinePlatformTest, RunsTimersOnItsTimeline) {
    int fired = 0;
    const auto timer = platform.scheduledTimer(milliseconds(100), [&](NSTimer&) { ++fired; });
    platform.usleep(milliseconds(99));
    EXPECT_EQ(fired, 0);
    platform.usleep(milliseconds(201));
    EXPECT_EQ(fired, 3);
    timer->invalidate();
    platform.usleep(milliseconds(500));
    EXPECT_EQ(fired, 3);
}

TEST_F(TimelinePlatformTest, HandsOnConsoleLinesAndJSON) {
    platform.NSLog("a line");
    EXPECT_EQ(console.lines(), std::vector<std::string>{"a line"});
    EXPECT_EQ(&platform.JSON(), &JSON);
}

TEST_F(TimelinePlatformTest, HasNotFailedUnlessABackEndSaysSo) { EXPECT_EQ(platform.failure(), ""); }

}  // namespace

}  // namespace nearcast
