// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

class RSSIQuery : public testing::Test, protected doubles::ManagerBench {
protected:
    RSSIQuery() { listen(); }
    ~RSSIQuery() override { manager.stopScan(); }
    RSSIQuery(const RSSIQuery&) = delete;
    RSSIQuery& operator=(const RSSIQuery&) = delete;
};

TEST_F(RSSIQuery, BeforeAnyScanGives127WithoutATraceOfTheTable) {
    journal.watchTraces();
    EXPECT_EQ(manager.getRSSI(dongle), 127);
    EXPECT_EQ(
        journal.lines(),
        (Lines{"trace 0 getRSSI:: 00:11:22:AA:BB:CC", "trace 2 isValidateMACAddr:: 00:11:22:AA:BB:CC",
               "trace 3 isValidateMACAddr:: 00:11:22:AA:BB:CC, -> 1", "trace 1 getRSSI:: 00:11:22:AA:BB:CC, -> 127"}));
}

TEST_F(RSSIQuery, GivesTheNewestOutput) {
    manager.startScan(1);
    for (const std::int32_t RSSI : {-60, -61, -75}) hear(dongle, RSSI);
    journal.watchTraces();
    EXPECT_EQ(manager.getRSSI(dongle), -75);
    EXPECT_EQ(journal.lines("trace 6 "),
              (Lines{"trace 6 getRSSI:: rssiData.count != 0, 1", "trace 6 getRSSI:: foundRssiDic != nil, <ptr>"}));
}

TEST_F(RSSIQuery, GivesZeroOfADongleThatHasNoOutputYet) {
    manager.startScan();
    hear(dongle, -60);
    EXPECT_EQ(manager.getRSSI(dongle), 0);
}

TEST_F(RSSIQuery, KeysOnTheExactText) {
    manager.startScan(1);
    hearTimes(2, dongle, -60);
    EXPECT_EQ(manager.getRSSI("00:11:22:aa:bb:cc"), 127);
    EXPECT_EQ(manager.getRSSI(""), 127);
    EXPECT_EQ(manager.getRSSI({}), 127);
    EXPECT_EQ(console(), Lines{});
}

TEST_F(RSSIQuery, OfAnAddressThatIsNotAcceptedIsRefusedWithoutTheTablesLock) {
    manager.acceptsAddresses = false;
    journal.watchLocks();
    journal.watchTraces();
    EXPECT_EQ(manager.getRSSI(dongle), 127);
    EXPECT_EQ(console(), Lines{"console UUID is invalid."});
    EXPECT_EQ(journal.lines("take"), Lines{});
    EXPECT_EQ(journal.lines("trace 7 "),
              Lines{"trace 7 getRSSI:: [self isValidateMACAddr:MACAddr] == NO, <ptr>, 00:11:22:AA:BB:CC"});
    EXPECT_EQ(journal.lines("trace 1 "), Lines{"trace 1 getRSSI:: 00:11:22:AA:BB:CC, -> 127"});
}

TEST_F(RSSIQuery, HoldsTheTablesLockAlone) {
    journal.watchLocks();
    manager.getRSSI(dongle);
    EXPECT_EQ(journal.lines(), (Lines{"take _lockRssiDataFlag", "release _lockRssiDataFlag"}));
}

}  // namespace
}  // namespace nearcast
