// SPDX-License-Identifier: Apache-2.0
#include "DecisionBench.h"

#include <gtest/gtest.h>

namespace nearcast::nearest {

namespace {

DecisionBench withTheBarChosen() {
    DecisionBench bench;
    bench.both(0, 1, -50, -58);
    bench.decision.pass(1);
    return bench;
}

TEST(DecisionRegistryTest, KeepsTheChoiceWhenOtherDevicesComeAndGo) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRegistry(1, {{"A New One", recordOf("02:00:00:00:00:0C")}, {"Bar", recordOf(barMAC, -60)}});
    EXPECT_EQ(bench.at(1), "Bar");
    EXPECT_EQ(bench.decision.chosen()->level, -50);
}

TEST(DecisionRegistryTest, GoesOnToAnotherWhenTheChosenDeviceIsRemoved) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRegistry(1, {{"Till", recordOf(tillMAC, -60)}});
    EXPECT_EQ(bench.at(1), "Till");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::removed);
}

TEST(DecisionRegistryTest, ChoosesNobodyWhenAllDevicesAreRemoved) {
    DecisionBench bench = withTheBarChosen();
    const auto before = bench.decision.changes();
    bench.decision.setRegistry(1, {});
    EXPECT_EQ(bench.at(1), "");
    EXPECT_EQ(bench.decision.choice().rule, NearestRule::removed);
    EXPECT_EQ(bench.decision.changes(), before + 1);
}

TEST(DecisionRegistryTest, TakesADongleThatMovedToAnotherPortForAnotherDevice) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRegistry(1, {{"Cellar", recordOf(barMAC, -60)}, {"Till", recordOf(tillMAC, -60)}});
    EXPECT_EQ(bench.at(1), "Till");
}

TEST(DecisionRegistryTest, AppliesAThresholdThatWasChanged) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRegistry(1, {{"Bar", recordOf(barMAC, -45)}, {"Till", recordOf(tillMAC, -70)}});
    EXPECT_EQ(bench.at(1.75), "Bar");
    EXPECT_EQ(bench.at(2), "Till");
}

TEST(DecisionRegistryTest, TakesTheFirstOfSeveralRecordsWithOneAddress) {
    DecisionBench bench;
    bench.decision.setRegistry(0, {{"B", recordOf(barMAC)}, {"A", recordOf(barMAC)}});
    bench.bar(0, -60);
    EXPECT_EQ(bench.at(1), "A");
    const auto explained = bench.decision.explain(1);
    ASSERT_EQ(explained.size(), 2U);
    EXPECT_EQ(explained[1].missing, "its address is that of A");
}

TEST(DecisionRegistryTest, PassesOverAnAddressThatIsNotRegistered) {
    DecisionBench bench;
    bench.decision.heard(0, "02:00:00:00:00:FF", -10);
    EXPECT_TRUE(bench.decision.reported(0, "", "02:00:00:00:00:FF", -10));
    EXPECT_EQ(bench.at(2), "");
}

TEST(DecisionRegistryTest, SaysThatAReportOfAnUnknownPortDoesNotFit) {
    DecisionBench bench;
    EXPECT_FALSE(bench.decision.reported(0, "Cellar", "02:00:00:00:00:FF", -10));
    EXPECT_FALSE(bench.decision.reported(0, "Cellar", barMAC, -10));
    EXPECT_FALSE(bench.decision.reported(0, "", barMAC, -10));
    EXPECT_TRUE(bench.decision.reported(0, "Bar", barMAC, -10));
}

TEST(DecisionRegistryTest, ReadsARecordWithoutAddressOrWithAnAbsentRecord) {
    DecisionBench bench;
    bench.decision.setRegistry(0, {{"Odd", std::make_shared<const SettingRecord>()}, {"None", nullptr}});
    EXPECT_EQ(bench.decision.explain(0).size(), 1U);
    EXPECT_EQ(bench.at(1), "");
}

SettingRecordPointer recordWithAddress(SettingValue address) {
    return std::make_shared<const SettingRecord>(
        SettingRecord{{std::string(kQXDongleMACAddr), std::move(address)}, {std::string(kQXThreshouldRSSI), -90}});
}

TEST(DecisionRegistryTest, NeverChoosesADeviceWhoseRecordNamesNoDongle) {
    const SettingRecord withoutAddress{{std::string(kQXNickName), "no dongle yet"}};
    for (const auto& record : {std::make_shared<const SettingRecord>(withoutAddress), recordWithAddress(nullptr),
                               recordWithAddress(0), recordWithAddress(SettingValue::Array{})}) {
        DecisionBench bench;
        bench.decision.setRegistry(0, {{"Bar", recordOf(barMAC, -60)}, {"Odd", record}});
        for (double at = 0; at <= 3; at += DecisionBench::quarter) {
            bench.bar(at, -55);
            bench.decision.heard(at, "", -30);
            EXPECT_TRUE(bench.decision.reported(at, "", "", -30));
        }
        EXPECT_EQ(bench.at(3), "Bar");
        const auto odd = bench.decision.explain(3).at(1);
        EXPECT_EQ(odd.missing, "its record names no dongle");
        EXPECT_FALSE(odd.level);
    }
}

TEST(DecisionRegistryTest, FindsADeviceByAnEmptyAddressWhereItsRecordNamesOneAsTheManagerDoes) {
    DecisionBench bench;
    bench.decision.setRegistry(0, {{"Dongleless", std::make_shared<const SettingRecord>()}, {"Empty", recordOf("")}});
    EXPECT_TRUE(bench.decision.reported(0, "Empty", "", -30));
    EXPECT_EQ(bench.at(1), "Empty");
}

TEST(DecisionRegistryTest, ForgetsADongleThatARecordNamesNoLonger) {
    DecisionBench bench = withTheBarChosen();
    bench.decision.setRegistry(1, {{"Bar", std::make_shared<const SettingRecord>()}, {"Till", recordOf(tillMAC, -60)}});
    EXPECT_EQ(bench.at(1), "Till");
    bench.bar(1.25, -40);
    EXPECT_FALSE(bench.decision.explain(1.25).at(0).level);
}

}  // namespace

}  // namespace nearcast::nearest
