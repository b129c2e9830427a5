// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Standstill.h"

#include <gtest/gtest.h>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class StandstillTest : public testing::Test {
protected:
    StandstillTest() { standstill.begin(0s); }

    bool rings(Time now, Time silence) {
        return standstill.rings(now, silence, [this] {
            ++looks;
            return events;
        });
    }

    Standstill standstill;
    std::optional<std::uint32_t> events = 7;
    int looks = 0;
};

TEST_F(StandstillTest, RingsWhereNoEventCame) {
    EXPECT_FALSE(rings(2s, 2s));
    EXPECT_EQ(standstill.due(), 14s);
    EXPECT_FALSE(rings(14s - 1ns, 14s));
    EXPECT_TRUE(rings(14s, 14s));
}

TEST_F(StandstillTest, RingsNotWhereOneCame) {
    EXPECT_FALSE(rings(2s, 2s));
    events = 8;
    EXPECT_FALSE(rings(14s, 14s));
    EXPECT_TRUE(rings(26s, 26s));
}

TEST_F(StandstillTest, DoesNotCountWhileReportsCome) {
    EXPECT_FALSE(rings(2s, 2s - 1ns));
    EXPECT_FALSE(rings(4s, 0s));
    EXPECT_EQ(looks, 0);
    EXPECT_EQ(standstill.due(), 6s);
}

TEST_F(StandstillTest, RingsNotWhereSomethingWasHeardMeanwhile) {
    EXPECT_FALSE(rings(2s, 2s));
    EXPECT_FALSE(rings(14s, 12s - 1ns));
    EXPECT_TRUE(rings(26s, 24s));
}

TEST_F(StandstillTest, RingsNotAfterASleepOfTheMachine) {
    EXPECT_FALSE(rings(2s, 2s));
    EXPECT_FALSE(rings(16s + 1ns, 16s));
    standstill.begin(100s);
    EXPECT_FALSE(rings(102s, 102s));
    EXPECT_TRUE(rings(116s, 116s)) << "a look may come a little late";
}

TEST_F(StandstillTest, RingsNotWhereTheKernelDoesNotCount) {
    events.reset();
    EXPECT_FALSE(rings(2s, 2s));
    EXPECT_FALSE(rings(14s, 14s));
    EXPECT_FALSE(rings(28s, 28s));
}

TEST_F(StandstillTest, IsOverAtItsEnd) {
    EXPECT_FALSE(rings(2s, 2s));
    standstill.end();
    EXPECT_EQ(standstill.due(), std::nullopt);
    EXPECT_FALSE(rings(14s, 14s));
}

}  // namespace

}  // namespace nearcast::bluez
