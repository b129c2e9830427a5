// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::doubles {
namespace {

const std::string delegate =
    R"({"do":"setDelegate","implements":["didDiscoverPort:deviceType:MACAddr:RSSI:","didUpdateState:MACAddr:"]})";

std::vector<Json> eventsOf(const std::vector<std::string>& lines, const std::string& kind) {
    std::vector<Json> result;
    for (const Json& event : ModelManager::run(lines)) {
        if (event["event"] == kind) result.push_back(event);
    }
    return result;
}

std::string advertise(double at, int RSSI) {
    return Json{{"at", at}, {"do", "advertise"}, {"manufacturerData", "FFFF001122AABBCC"}, {"RSSI", RSSI}}.dump();
}

TEST(ModelManager, ReportsFromTheSecondReadingOnWithWindowsOfOne) {
    const auto reports = eventsOf(
        {delegate, R"({"do":"startScan","samplingNumber":1})", advertise(1, -60), advertise(2, -50), advertise(3, -70)},
        "didDiscoverPort");
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0]["RSSI"], -50);
    EXPECT_EQ(reports[1]["RSSI"], -70);
    EXPECT_EQ(reports[1]["MACAddr"], "00:11:22:AA:BB:CC");
}

TEST(ModelManager, TellsSilenceAtTheSweepThatFindsItFiveSecondsOld) {
    const auto told =
        eventsOf({delegate, R"({"do":"startScan"})", advertise(0, -60), R"({"at":20,"do":"end"})"}, "didUpdateState");
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0]["at"], 5.0);
}

TEST(ModelManager, CalibratesInsideItsSleepWithTheLinesThatFallIntoIt) {
    std::vector<std::string> lines{delegate, R"({"do":"calibrateActionArea","MACAddr":"00:11:22:AA:BB:CC"})"};
    for (int count = 0; count < 15; ++count) lines.push_back(advertise(0.6 + 0.01 * count, count == 10 ? -50 : -60));
    const auto returned = eventsOf(lines, "return");
    ASSERT_EQ(returned.size(), 1U);
    EXPECT_EQ(returned[0]["value"], -60);
    EXPECT_EQ(returned[0]["at"], 1.0);
}

TEST(ModelManager, RefusesASecondRegistrationOfAPort) {
    const std::string add = R"({"do":"addSettingForPrinterPortName","portName":"A","dongleMACAddr":"Z"})";
    const auto raised = eventsOf({add, add}, "raise");
    ASSERT_EQ(raised.size(), 1U);
    EXPECT_EQ(raised[0]["reason"], "The specified portName is already in use.");
}

}  // namespace
}  // namespace nearcast::doubles
