// SPDX-License-Identifier: Apache-2.0
#include "report/ReportPage.h"

#include "report/ReportJSON.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <stdexcept>

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
    const json page = json::parse(reportJSON(data, "nearcast 0"));
    EXPECT_EQ(page["dongles"][0]["raw"]["t"], json({1000, 100, 0}));
    EXPECT_EQ(page["dongles"][0]["raw"]["v"], json({-70, 2, -7}));
}

TEST(ReportJSONTest, ExtremeReadingsAreExact) {
    ReportData data = dataWithName("x");
    data.dongles[0].raw.add(0, INT32_MAX);
    data.dongles[0].raw.add(0, INT32_MIN);
    const json page = json::parse(reportJSON(data, ""));
    EXPECT_EQ(page["dongles"][0]["raw"]["v"], json({std::int64_t{INT32_MAX}, -4294967295}));
}

TEST(ReportJSONTest, ADecisionHasOneDecimal) {
    ReportData data = dataWithName("x");
    data.decisions.push_back({1500, 0, NearestRule::led, -58.04, -65, 0, -64.26, 6.22, true});
    const json decision = json::parse(reportJSON(data, ""))["decision"][0];
    EXPECT_EQ(decision, json::parse(R"({"at":1500,"dongle":0,"rule":"led","signal":-58,"threshold":-65,"runner":0,
        "runnerSignal":-64.3,"distance":6.2,"stale":true})"));
}

TEST(ReportJSONTest, WhatIsNotThereIsNull) {
    ReportData data = dataWithName("x");
    data.decisions.emplace_back();
    const json page = json::parse(reportJSON(data, ""));
    EXPECT_TRUE(page["truth"].is_null());
    EXPECT_TRUE(page["decision"][0]["distance"].is_null());
    data.truth.emplace();
    EXPECT_EQ(json::parse(reportJSON(data, ""))["truth"], json::array());
}

TEST(ReportJSONTest, AllSettingsAreNamed) {
    const json settings = json::parse(reportJSON({}, ""))["settings"];
    ASSERT_EQ(settings.size(), nearestSettings().size());
    EXPECT_EQ(settings[0]["name"], "defaultThreshold");
    EXPECT_EQ(settings[0]["unit"], "dBm");
}

TEST(ReportJSONTest, AHostileNameIsTheSameTextAndNoMarkup) {
    const std::string text = reportJSON(dataWithName(hostile), hostile);
    EXPECT_EQ(text.find('<'), std::string::npos);
    const json page = json::parse(text);
    EXPECT_EQ(page["dongles"][0]["port"], hostile);
    EXPECT_EQ(page["dongles"][0]["nick"], hostile);
    EXPECT_EQ(page["title"], hostile);
}

TEST(ReportJSONTest, ANameThatIsNotUTF8GetsTheReplacementCharacter) {
    const json page = json::parse(reportJSON(dataWithName("a\xFF\xC3(b"), ""));
    EXPECT_EQ(page["dongles"][0]["nick"], "a\xEF\xBF\xBD\xEF\xBF\xBD(b");
}

TEST(ReportPageTest, NamesAreFilledInOnce) {
    const auto twice = [](std::string_view name) { return name == "a" ? "{{b}}" : "!"; };
    EXPECT_EQ(filledIn("<{{a}}> {{b}}", twice), "<{{b}}> !");
    EXPECT_EQ(filledIn("nothing", twice), "nothing");
    EXPECT_THROW(filledIn("{{a", twice), std::logic_error);
}

TEST(ReportPageTest, TextBecomesMarkupThatShowsIt) {
    EXPECT_EQ(markupOf("<b title=\"x\">&amp;\x01\xFF"),
              "&lt;b title=&quot;x&quot;&gt;&amp;amp;\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(ReportPageTest, HasNoPlaceholderLeft) {
    const std::string page = reportPage(dataWithName("x"), "nearcast 0");
    EXPECT_EQ(page.find("{{"), std::string::npos);
}

TEST(ReportPageTest, ScriptsEndOnlyWhereThePageEndsThem) {
    const std::string page = reportPage(dataWithName(hostile), "nearcast 0");
    std::size_t ends = 0;
    for (auto at = page.find("</script"); at != std::string::npos; at = page.find("</script", at + 1)) ++ends;
    EXPECT_EQ(ends, 3U);  // the data, uPlot, the page's own
}

TEST(ReportPageTest, ItsPolicyAllowsNothingButWhatItHolds) {
    const std::string page = reportPage(dataWithName("x"), "nearcast 0");
    EXPECT_NE(page.find("content=\"default-src 'none'; "), std::string::npos);
    EXPECT_EQ(page.find("unsafe-"), std::string::npos);
    EXPECT_EQ(page.find(" src="), std::string::npos);
    EXPECT_EQ(page.find("<link"), std::string::npos);
}

TEST(ReportPageTest, CarriesTheLicenceOfWhatDrawsItsCurves) {
    EXPECT_NE(reportPage({}, "").find("Permission is hereby granted, free of charge"), std::string::npos);
}

}  // namespace
}  // namespace nearcast::cli
