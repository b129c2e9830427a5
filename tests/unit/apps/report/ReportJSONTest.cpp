// SPDX-License-Identifier: Apache-2.0
#include "report/ReportData.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace nearcast::cli {
namespace {

using nlohmann::json;

ReportData dataWithName(const std::string& name) {
    ReportData data;
    data.title = name;
    data.dongles.resize(1);
    data.dongles[0].portName = data.dongles[0].nickName = data.dongles[0].MACAddr = name;
    return data;
}

const std::string hostile = "</script><!-- \"quoted\" 'too' \\ & \n\t\x01\x7F \xE2\x80\xA8 {{data}}";

TEST(ReportJSONTest, ColumnsAreDifferences) {
    ReportData data = dataWithName("x");
    data.dongles[0].raw.add(1000, -70);
    data.dongles[0].raw.add(1100, -68);
    data.dongles[0].raw.add(1100, -75);
    const json page = json::parse(JSONOf(data, "nearcast 0"));
    EXPECT_EQ(page["dongles"][0]["raw"]["t"], json({1000, 100, 0}));
    EXPECT_EQ(page["dongles"][0]["raw"]["v"], json({-70, 2, -7}));
}

TEST(ReportJSONTest, ExtremeReadingsAreExact) {
    ReportData data = dataWithName("x");
    data.dongles[0].raw.add(0, INT32_MAX);
    data.dongles[0].raw.add(0, INT32_MIN);
    const json page = json::parse(JSONOf(data, ""));
    EXPECT_EQ(page["dongles"][0]["raw"]["v"], json({std::int64_t{INT32_MAX}, -4294967295}));
}

TEST(ReportJSONTest, ADecisionHasOneDecimal) {
    ReportData data = dataWithName("x");
    data.decisions.push_back({1500, 0, NearestRule::led, -58.04, -65, 0, -64.26, 6.22, true});
    const json decision = json::parse(JSONOf(data, ""))["decision"][0];
    EXPECT_EQ(decision, json::parse(R"({"at":1500,"dongle":0,"rule":"led","signal":-58,"threshold":-65,"runner":0,
        "runnerSignal":-64.3,"distance":6.2,"stale":true})"));
}

TEST(ReportJSONTest, WhatIsNotThereIsNull) {
    ReportData data = dataWithName("x");
    data.decisions.emplace_back();
    const json page = json::parse(JSONOf(data, ""));
    EXPECT_TRUE(page["truth"].is_null());
    EXPECT_TRUE(page["decision"][0]["distance"].is_null());
    data.truth.emplace();
    EXPECT_EQ(json::parse(JSONOf(data, ""))["truth"], json::array());
}

TEST(ReportJSONTest, AllSettingsAreNamed) {
    const json settings = json::parse(JSONOf(ReportData(), ""))["settings"];
    ASSERT_EQ(settings.size(), nearestSettings().size());
    EXPECT_EQ(settings[0]["name"], "defaultThreshold");
    EXPECT_EQ(settings[0]["unit"], "dBm");
}

TEST(ReportJSONTest, AHostileNameIsTheSameText) {
    const json page = json::parse(JSONOf(dataWithName(hostile), hostile));
    EXPECT_EQ(page["dongles"][0]["port"], hostile);
    EXPECT_EQ(page["dongles"][0]["nick"], hostile);
    EXPECT_EQ(page["title"], hostile);
}

TEST(ReportJSONTest, ANameThatIsNotUTF8GetsTheReplacementCharacter) {
    const json page = json::parse(JSONOf(dataWithName("a\xFF\xC3(b"), ""));
    EXPECT_EQ(page["dongles"][0]["nick"], "a\xEF\xBF\xBD\xEF\xBF\xBD(b");
}

}  // namespace
}  // namespace nearcast::cli
