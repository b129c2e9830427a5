// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Seconds = std::vector<std::int64_t>;

/// What a manager does on a clock that may leap.
class Leap : public testing::Test, protected doubles::ManagerBench {
protected:
    Leap() {
        platform.timeline().allowLeaps();
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didUpdateState = [this](std::string_view, std::string_view) {
            silences.push_back(std::chrono::floor<std::chrono::seconds>(platform.date().sinceStart()).count());
        };
        manager.setDelegate(delegate);
        manager.startScan(1);
        journal.clear();
    }

    Seconds silences;
};

TEST_F(Leap, ASweepOfAnEmptyTableAndARestartThatNobodyFollowsAreLeftOut) {
    pass(1'000'000'001s);
    EXPECT_EQ(journal.lines(), std::vector<std::string>{});
    EXPECT_EQ(platform.date().sinceStart(), 1'000'000'001s);
}

TEST_F(Leap, ADongleThatIsInRangeIsSweptOutAtItsOwnSecondBeforeAndAfter) {
    pass(3s);
    hear(dongle, -60);
    pass(1'000'000'000s);
    hear(dongle, -60);
    pass(1'000'000'000s);
    EXPECT_EQ(silences, (Seconds{10, 1'000'000'010}));
}

TEST_F(Leap, RestartsComeAtTheirOwnTimesAfterwards) {
    pass(1'000'000'000s);  // 40 s after the 8,333,333rd
    pass(79s);
    EXPECT_EQ(journal.count("central stop"), 0U);
    pass(1s);
    EXPECT_EQ(journal.count("central stop"), 1U);
}

TEST_F(Leap, ATraceShowsEverySweepAndRestart) {
    journal.watchTraces();
    pass(2h);
    EXPECT_EQ(journal.count("trace 2 eventRepeatTimer: "), 2U * 3600 / 5);
    EXPECT_EQ(journal.count("central stop"), 2U * 3600 / 120);
}

TEST_F(Leap, AnObserverOfTheLocksSeesEverySweep) {
    journal.watchLocks();
    pass(2h);
    EXPECT_EQ(journal.count("take _lockRssiDataFlag"), 2U * 3600 / 5);
}

TEST_F(Leap, ATableThatNobodyAsksToBeToldOfIsNotSweptForNothing) {
    hear(dongle, -60);
    manager.setDelegate(std::make_shared<QXNearcastManagerDelegate>());
    pass(1'000'000'000s);
    EXPECT_EQ(journal.lines(), std::vector<std::string>{});
    EXPECT_EQ(manager.getRSSI(dongle), 0);
}

TEST_F(Leap, WithoutADelegateATableIsNotSweptEither) {
    hear(dongle, -60);
    manager.setDelegate(nullptr);
    pass(1'000'000'000s);
    EXPECT_EQ(journal.lines(), std::vector<std::string>{});
    listen();
    pass(5s);
    EXPECT_EQ(reports(), std::vector<std::string>{"silent  00:11:22:AA:BB:CC"});
}

TEST_F(Leap, OfTwoDonglesTheSecondKeepsItsSecondToo) {
    hear(dongle, -60);
    pass(7s);
    hear(secondDongle, -60);
    pass(1'000'000'000s);
    EXPECT_EQ(silences, (Seconds{5, 15}));
}

}  // namespace
}  // namespace nearcast
