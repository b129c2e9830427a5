// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLines.h"

#include "lines/Line.h"
#include "support/Dongle.h"
#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

namespace nearcast::replay {

namespace {

using Times = std::vector<std::int64_t>;

Contents readText(std::string_view text) { return readAll(octetsOf(text)); }

TEST(JsonLinesReader, ReadsAdvertisements) {
    const auto reports = readText(R"({"at": 0.5, "do": "advertise", "name": "QX1", "manufacturerData": "FFFF0102",)"
                                  R"( "RSSI": -60, "services": ["180F", "x"]})")
                             .reports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].at.count(), 500'000);
    EXPECT_EQ(reports[0].report.name, "QX1");
    EXPECT_EQ(reports[0].report.manufacturerData, hex("FFFF0102"));
    EXPECT_EQ(reports[0].report.RSSI, -60);
    EXPECT_EQ(reports[0].report.services, (std::vector{CBUUID::UUIDWithShort(0x180F), CBUUID::UUIDWithString("X")}));
    EXPECT_FALSE(reports[0].report.address);
    EXPECT_FALSE(reports[0].malformed);
}

TEST(JsonLinesReader, TakesAbsentServicesForTheDongleServiceAndAnEmptyListForNone) {
    const auto reports = readText(
                             "{\"do\": \"advertise\", \"RSSI\": -60}\n"
                             "{\"do\": \"advertise\", \"RSSI\": -60, \"services\": []}\n")
                             .reports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].report.services, std::vector{CBUUID::UUIDWithString(dongle::serviceUUID)});
    EXPECT_TRUE(reports[1].report.services.empty());
}

TEST(JsonLinesReader, ReadsStatesAndEnds) {
    const Contents contents = readText("{\"at\": 1, \"do\": \"radio\", \"state\": 4}\n{\"at\": 2, \"do\": \"end\"}\n");
    ASSERT_EQ(contents.items.size(), 2U);
    EXPECT_EQ(std::get<RecordedState>(contents.items[0]).state, 4);
    EXPECT_EQ(timeOf(contents.items[0]).count(), 1'000'000);
    EXPECT_EQ(std::get<RecordedEnd>(contents.items[1]).at.count(), 2'000'000);
}

TEST(JsonLinesReader, KeepsTimesAsTheyAreWrittenAndInheritsMissingOnes) {
    const std::string rest = R"("do": "advertise", "RSSI": -60})";
    const std::string text =
        "{\"at\": 3," + rest + "\n{" + rest + "\n{\"at\": 1.5, " + rest + "\n{" + rest + "\n{\"at\": -1," + rest;
    EXPECT_EQ(readText(text).times(), (Times{3'000'000, 3'000'000, 1'500'000, 1'500'000, -1'000'000}));
}

TEST(JsonLinesReader, PassesOverBlankLinesAndALineEndOfTwoCharacters) {
    const Contents contents = readText("\n  \t\r\n{\"do\": \"end\"}\r\n\n{\"do\": \"end\"}");
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.items.size(), 2U);
}

TEST(JsonLinesReader, PassesOverAByteOrderMark) {
    const Contents contents = readText("\xEF\xBB\xBF{\"do\": \"end\"}\n");
    EXPECT_FALSE(contents.damagedAt) << contents.damage;
    EXPECT_EQ(contents.items.size(), 1U);
}

TEST(JsonLinesReader, CountsAByteOrderMarkAmongTheBytesBeforeDamage) {
    EXPECT_EQ(readText("\xEF\xBB\xBF{\"do\": \"end\"}\ngarbage\n").damagedAt, 3U + 14U);
}

struct DamageCase {
    const char* line;
    const char* problem;  // part of the message
};

TEST(JsonLinesReader, TakesAnyOtherLineForDamageAndNamesByteAndLine) {
    const DamageCase cases[] = {
        {"{\"do\": \"startScan\"}", "\"startScan\" is no part of a recording"},
        {"{\"do\": \"advertise\"}", "RSSI"},
        {"{\"do\": \"advertise\", \"RSSI\": -60", "JSON"},
        {"{\"do\": \"nothing\"}", "nothing"},
        {"{\"do\": \"advertise\", \"RSSI\": -60, \"extra\": 1}", "extra"},
        {"{\"at\": 0, \"do\": \"advertise\", \"name\": null, \"manufacturerData\": \"F\", \"RSSI\": -60}",
         "manufacturerData"},
        {"[1]", "object"},
        {"\xFF\xFE", "JSON"},
    };
    const std::string good = "{\"do\": \"end\"}\n\n";
    for (const DamageCase& one : cases) {
        const Contents contents = readText(good + one.line + "\n" + good);
        EXPECT_EQ(contents.items.size(), 1U) << one.line;
        EXPECT_EQ(contents.damagedAt, good.size()) << one.line;
        EXPECT_EQ(contents.damage.rfind("damaged at byte 15: ", 0), 0U) << contents.damage;
        EXPECT_NE(contents.damage.find("line 3"), std::string::npos) << contents.damage;
        EXPECT_NE(contents.damage.find(one.problem), std::string::npos) << contents.damage;
    }
}

TEST(JsonLinesReader, TakesALineOfMoreThanALimitForDamage) {
    std::string line = R"({"do": "end"})";
    line.resize(JsonLinesReader::longestLine, ' ');
    EXPECT_EQ(readText(line + "\n").items.size(), 1U);
    EXPECT_EQ(readText(line + " \n").damagedAt, 0U);
}

}  // namespace

}  // namespace nearcast::replay
