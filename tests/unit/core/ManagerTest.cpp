// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "doubles/FaultyPlatform.h"
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {
namespace {

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

}  // namespace
}  // namespace nearcast
