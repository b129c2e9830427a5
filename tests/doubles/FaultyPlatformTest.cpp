// SPDX-License-Identifier: Apache-2.0
#include "doubles/FaultyPlatform.h"
#include "doubles/Journal.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <gtest/gtest.h>

#include <chrono>

namespace nearcast::doubles {
namespace {

using namespace std::chrono_literals;
using Call = FaultyPlatform::Call;

struct Deaf : CBCentralManagerDelegate {
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {}
};

class FaultyPlatformTest : public testing::Test {
protected:
    Journal journal_;
    JSONSerialization JSON_;
    VirtualPlatform inner_{journal_, JSON_, &journal_};
    FaultyPlatform platform_{inner_};
    Deaf delegate_;
};

TEST_F(FaultyPlatformTest, ForwardsEverythingWhileNoFaultIsAskedFor) {
    const auto central = platform_.centralManager(delegate_);
    central->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    central->stopScan();
    EXPECT_EQ(journal_.lines(), (std::vector<std::string>{"central scan all", "central stop"}));
    EXPECT_EQ(central->state(), CBManagerStatePoweredOn);
    int fired = 0;
    const auto timer = platform_.scheduledTimer(1s, [&](NSTimer&) { ++fired; });
    timer->fire();
    platform_.usleep(2s);
    EXPECT_EQ(fired, 3);
    timer->invalidate();
    platform_.usleep(2s);
    EXPECT_EQ(fired, 3);
    EXPECT_EQ(platform_.date().sinceStart(), 4s);
}

TEST_F(FaultyPlatformTest, ThrowsAtTheNthCallOfAKindOnceAndDoesNotForwardIt) {
    const auto central = platform_.centralManager(delegate_);
    platform_.failAt(Call::stop, 2);
    central->stopScan();
    EXPECT_THROW(central->stopScan(), Fault);
    EXPECT_EQ(journal_.lines().size(), 1U);
    central->stopScan();
    central->scanForPeripheralsWithServices(std::nullopt, {});
    EXPECT_EQ(journal_.lines().size(), 3U);
}

}  // namespace
}  // namespace nearcast::doubles
