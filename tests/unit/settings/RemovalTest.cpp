// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

class Removal : public testing::Test, protected doubles::ManagerBench {};

TEST_F(Removal, ForgetsTheDeviceSoThatItsNameAndAddressCanBeUsedAgain) {
    addPrinter("A", dongle);
    manager.removeSettingWithPortName("A");
    EXPECT_TRUE(manager.getSettings()->empty());
    addPrinter("A", dongle);
    EXPECT_EQ(manager.getSettings()->size(), 1U);
}

TEST_F(Removal, OfAnUnknownOrAbsentNameChangesNothingAndRaisesNothing) {
    addPrinter("A", dongle);
    EXPECT_NO_THROW(manager.removeSettingWithPortName("B"));
    EXPECT_NO_THROW(manager.removeSettingWithPortName("a"));
    EXPECT_NO_THROW(manager.removeSettingWithPortName({}));
    EXPECT_EQ(manager.getSettings()->size(), 1U);
    EXPECT_EQ(console(), Lines{});
}

TEST_F(Removal, TracesWhatItDidNotFind) {
    journal.watchTraces();
    manager.removeSettingWithPortName("B");
    manager.removeSettingWithPortName({});
    EXPECT_EQ(
        journal.lines(),
        (Lines{"trace 0 removeSettingWithPortName:: B",
               "trace 7 removeSettingWithPortName:: [mutableSettings.allKeys containsObject:portName] == NO, <ptr>, B",
               "trace 1 removeSettingWithPortName:: B", "trace 0 removeSettingWithPortName:: (null)",
               "trace 7 removeSettingWithPortName:: portName == nil, <ptr>",
               "trace 1 removeSettingWithPortName:: (null)"}));
}

TEST_F(Removal, HoldsTheRegistryLockAndNoneForAnAbsentName) {
    journal.watchLocks();
    manager.removeSettingWithPortName({});
    EXPECT_EQ(journal.lines(), Lines{});
    manager.removeSettingWithPortName("B");
    EXPECT_EQ(journal.lines(), (Lines{"take _lockMutableSettingsFlag", "release _lockMutableSettingsFlag"}));
}

TEST_F(Removal, LeavesTheSignalsAndTheScanOfTheForgottenDongle) {
    listen();
    addPrinter("A", dongle);
    manager.startScan(1);
    hearTimes(2, dongle, -60);
    manager.removeSettingWithPortName("A");
    EXPECT_EQ(manager.getRSSI(dongle), -60);
    hear(dongle, -61);
    EXPECT_EQ(reports(), (Lines{"discover A 1 00:11:22:AA:BB:CC -60", "discover  0 00:11:22:AA:BB:CC -61"}));
    manager.stopScan();
}

TEST_F(Removal, TracesTheNameAtItsEntryAndItsExit) {
    addPrinter("A", dongle);
    journal.watchTraces();
    manager.removeSettingWithPortName("A");
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 0 removeSettingWithPortName:: A", "trace 1 removeSettingWithPortName:: A"}));
}

TEST_F(Removal, ComparesTheNameLetterByLetterAndTakesTheEmptyOneForAName) {
    addPrinter("", dongle);
    addPrinter("A", secondDongle);
    manager.removeSettingWithPortName("a");
    EXPECT_EQ(manager.getSettings()->size(), 2U);
    manager.removeSettingWithPortName("");
    EXPECT_EQ(manager.getSettings()->count("A"), 1U);
    EXPECT_EQ(manager.getSettings()->size(), 1U);
}

}  // namespace
}  // namespace nearcast
