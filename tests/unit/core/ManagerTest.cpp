// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "doubles/FaultyPlatform.h"
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class ManagerTest : public testing::Test, protected doubles::ManagerBench {};

TEST_F(ManagerTest, BeginsWithSamplingNumber7AndWithoutADelegateRegistryOrSignals) {
    EXPECT_EQ(manager.samplingNumber(), 7U);
    EXPECT_EQ(manager.delegate(), nullptr);
    EXPECT_TRUE(manager.getSettings()->empty());
    EXPECT_EQ(manager.getRSSI(dongle), 127);
}

TEST_F(ManagerTest, OpensOneRadioHoweverOftenItIsInitialised) {
    const VirtualRadio* const first = platform.radio();
    ASSERT_NE(first, nullptr);
    manager.startScan(3);
    manager.init();
    EXPECT_EQ(platform.radio(), first);
    EXPECT_EQ(manager.samplingNumber(), 3U);
}

TEST_F(ManagerTest, AccessorsLeaveNoRecordAndTakeNoLock) {
    journal.watchLocks();
    journal.watchTraces();
    manager.setDelegate(listener());
    EXPECT_NE(manager.delegate(), nullptr);
    EXPECT_EQ(manager.samplingNumber(), 7U);
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST(ManagerWithoutARadio, CanBeInitialisedAgainAfterTheRadioFailedToOpen) {
    doubles::ManagerBench bench;
    doubles::FaultyPlatform platform(bench.platform);
    Manager manager(&bench, platform);
    platform.failAt(doubles::FaultyPlatform::Call::openRadio, 1);
    EXPECT_THROW(manager.init(), doubles::Fault);
    EXPECT_EQ(manager.samplingNumber(), 0U);
    manager.init();
    EXPECT_EQ(manager.samplingNumber(), 7U);
    EXPECT_TRUE(manager.startScan());
    manager.stopScan();
}

TEST_F(ManagerTest, TheLimitsOfASignalAreTheOnesOfTheRadio) {
    EXPECT_EQ(kQXMinRSSI, -127);
    EXPECT_EQ(kQXInvalidRSSI, 127);
}

TEST(ManagerWithoutARadio, KeepsTheDelegateThatItHadBeforeItWasInitialised) {
    doubles::ManagerBench bench;
    Manager manager(&bench, bench.platform);
    const auto delegate = bench.listener();
    manager.setDelegate(delegate);
    manager.init();
    EXPECT_EQ(manager.delegate(), delegate);
}

class Readiness : public testing::Test, protected doubles::ManagerBench {};

TEST_F(Readiness, IsGivenAtOnceByARadioThatIsOn) {
    EXPECT_TRUE(manager.isLECapableHardware());
    EXPECT_EQ(platform.sleeps, 0);
}

TEST_F(Readiness, IsRefusedAtOnceByARadioThatIsResettingUnsupportedUnauthorizedOrOff) {
    for (const std::int64_t state : {1, 2, 3, 4}) {
        radio().setState(state);
        EXPECT_FALSE(manager.isLECapableHardware()) << state;
    }
    EXPECT_EQ(platform.sleeps, 0);
}

TEST_F(Readiness, IsWaitedForTenTimesAHundredMillisecondsWhileTheStateIsUnknown) {
    radio().setState(0);
    EXPECT_FALSE(manager.isLECapableHardware());
    EXPECT_EQ(platform.sleeps, 10);
    EXPECT_EQ(platform.date().sinceStart(), 1s);
}

TEST_F(Readiness, IsGivenAfterThreeSleepsByARadioThatKnowsItsStateByThen) {
    radio().setState(0);
    platform.onSleep = [&] {
        if (platform.sleeps == 3) radio().setState(5);
    };
    EXPECT_TRUE(manager.isLECapableHardware());
    EXPECT_EQ(platform.sleeps, 3);
}

TEST_F(Readiness, IsStillGivenAfterTheNinthSleepAndNoMoreAfterTheTenth) {
    for (const auto& [knownAt, capable] : {std::pair{9, true}, std::pair{10, false}}) {
        radio().setState(0);
        platform.sleeps = 0;
        platform.onSleep = [&, when = knownAt] {
            if (platform.sleeps == when) radio().setState(5);
        };
        EXPECT_EQ(manager.isLECapableHardware(), capable) << knownAt;
    }
}

TEST_F(Readiness, IsRefusedWithoutASleepWhileTheStateIsOneThatNobodyKnows) {
    for (const std::int64_t state : {std::int64_t{6}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()}) {
        radio().setState(state);
        EXPECT_FALSE(manager.isLECapableHardware()) << state;
    }
    EXPECT_EQ(platform.sleeps, 0);
}

TEST_F(Readiness, TracesTheStateAtEachAttempt) {
    radio().setState(6);
    journal.watchTraces();
    manager.isLECapableHardware();
    Lines expected(10, "trace 6 isLECapableHardware: manager.state: 6");
    expected.insert(expected.begin(), "trace 2 isLECapableHardware: ");
    expected.emplace_back("trace 3 isLECapableHardware: -> 0");
    EXPECT_EQ(journal.lines(), expected);
}

TEST_F(Readiness, CountsAnewWithEachCall) {
    radio().setState(0);
    manager.isLECapableHardware();
    manager.isLECapableHardware();
    EXPECT_EQ(platform.sleeps, 20);
}

TEST_F(Readiness, TakesNoLock) {
    journal.watchLocks();
    manager.isLECapableHardware();
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST_F(Readiness, AChangeOfStateLeavesTwoRecordsAndNothingElse) {
    listen();
    manager.startScan();
    journal.clear();
    journal.watchLocks();
    journal.watchTraces();
    radio().setState(4);
    radio().setState(5);
    const Lines once{"trace 2 centralManagerDidUpdateState:: -> <ptr>",
                     "trace 3 centralManagerDidUpdateState:: -> <ptr>"};
    EXPECT_EQ(journal.lines(), (Lines{once[0], once[1], once[0], once[1]}));
}

TEST_F(Readiness, AsksOnceWhereTheRadioVouchesForItsState) {
    for (const std::int64_t state : {1, 2, 3, 4, 5}) {
        radio().setState(state);
        journal.clear();
        journal.watchTraces();
        manager.isLECapableHardware();
        const std::string number = std::to_string(state);
        EXPECT_EQ(journal.lines("trace 6 "), Lines{"trace 6 isLECapableHardware: manager.state: " + number});
        EXPECT_EQ(journal.lines("trace 3 "),
                  Lines{"trace 3 isLECapableHardware: -> " + std::string(state == 5 ? "1" : "0")});
    }
}

TEST_F(Readiness, AsksAgainAfterASleepForAStateThatNobodyKnows) {
    radio().setState(0);
    platform.onSleep = [&] { radio().setState(6); };
    EXPECT_FALSE(manager.isLECapableHardware());
    EXPECT_EQ(platform.sleeps, 1) << "each kind of attempt counts";
}

}  // namespace
}  // namespace nearcast
