// SPDX-License-Identifier: Apache-2.0
#include "contract/ReportBench.h"
#include "doubles/KeptLines.h"
#include "platform/json/JSONSerialization.h"
#include "platform/replay/RecordingWriter.h"
#include "platform/simulator/SimulatorPlatform.h"
#include "unit/platform/simulator/SimulatorFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <set>

namespace nearcast::contract {
namespace {

using namespace std::chrono_literals;

/// The last report of each reading that is no scan response: each row has a reading of its own.
std::map<std::int32_t, AdvertisingReport> lastOfEach(const Reports& reports) {
    std::map<std::int32_t, AdvertisingReport> last;
    for (const AdvertisingReport& report : reports) {
        if (!report.scanResponse) last[report.RSSI] = report;
    }
    return last;
}

class EveryReport : public testing::TestWithParam<ReportBench> {
protected:
    const std::vector<AirRow> rows_ = readReportTable();
    const Reports reports_ = GetParam().hear(rows_);
    const std::map<std::int32_t, AdvertisingReport> last_ = lastOfEach(reports_);
};

TEST_P(EveryReport, IsWhatTheTableSaysOfItsAdvertisement) {
    for (const AirRow& row : rows_) {
        const auto expected = row.heardThrough(GetParam().radio);
        const auto heard = last_.find(row.RSSI);
        EXPECT_EQ(heard != last_.end(), expected.has_value()) << row.what;
        if (heard != last_.end() && expected) {
            EXPECT_EQ(Said::of(heard->second), *expected) << row.what;
        }
    }
}

TEST_P(EveryReport, IsOfTheSenderAndTheKindOfAddressThatItCameFrom) {
    for (const AirRow& row : rows_) {
        const auto heard = last_.find(row.RSSI);
        if (heard == last_.end()) continue;
        EXPECT_EQ(heard->second.address.has_value(), GetParam().addresses) << row.what;
        if (!GetParam().addresses) continue;
        EXPECT_EQ(heard->second.address, row.address) << row.what;
        EXPECT_EQ(heard->second.addressType, row.random ? 1 : 0) << row.what;
    }
}

TEST_P(EveryReport, ComesOfAnAdvertisementOfTheTable) {
    std::set<std::int32_t> readings;
    for (const AirRow& row : rows_) readings.insert(row.RSSI);
    for (const AdvertisingReport& report : reports_) EXPECT_TRUE(readings.contains(report.RSSI)) << report.RSSI;
}

INSTANTIATE_TEST_SUITE_P(Through, EveryReport, testing::ValuesIn(reportBenches()),
                         [](const auto& bench) { return bench.param.name; });

TEST(ReportTable, KnowsEachRowByItsReading) {
    std::set<std::int32_t> readings;
    for (const AirRow& row : readReportTable()) EXPECT_TRUE(readings.insert(row.RSSI).second) << row.what;
    EXPECT_GE(readings.size(), 50U);
}

TEST(ReportTable, ExceptsARadioOnlyForAReasonAndForSomethingElse) {
    for (const AirRow& row : readReportTable()) {
        for (const auto& [radio, exception] : row.but) {
            EXPECT_TRUE(radio == "bluez" || radio == "hci") << row.what;
            EXPECT_FALSE(exception.why.empty()) << row.what;
            EXPECT_TRUE(exception.later || exception.heard != row.heard) << row.what;
        }
    }
}

struct Form {
    const char* name;
    std::unique_ptr<replay::RecordingWriter> (*make)(replay::RecordingWriter::Out out);

    friend std::ostream& operator<<(std::ostream& out, const Form& form) { return out << form.name; }
};

constexpr std::chrono::microseconds begin = 1h;
constexpr Form forms[] = {
    {"Lines", [](auto out) { return replay::makeJsonLinesWriter(std::move(out)); }},
    {"Btsnoop", [](auto out) { return replay::makeBtsnoopWriter(std::move(out), begin); }},
    {"Pcapng", [](auto out) { return replay::makePcapngWriter(std::move(out), begin); }},
};

std::string recorded(const Form& form, const Reports& reports) {
    std::string bytes;
    const auto writer = form.make([&](std::string_view some) { bytes += some; });
    std::chrono::microseconds at{0};
    for (const AdvertisingReport& report : reports) writer->write(replay::RecordedReport{at += 1ms, report, false});
    return bytes;
}

/// Two sequences of reports that say the same, one by one.
void expectSame(const Reports& heard, const Reports& expected) {
    ASSERT_EQ(heard.size(), expected.size());
    for (std::size_t place = 0; place < heard.size(); ++place) {
        EXPECT_EQ(heard[place].RSSI, expected[place].RSSI);
        EXPECT_EQ(Said::of(heard[place]), Said::of(expected[place])) << expected[place].RSSI;
    }
}

class WhatIsRecorded : public testing::TestWithParam<Form> {};

TEST_P(WhatIsRecorded, IsHeardAgainWhateverRadioHeardIt) {
    const std::vector<AirRow> rows = readReportTable();
    for (const ReportBench& bench : reportBenches()) {
        SCOPED_TRACE(bench.name);
        const Reports heard = bench.hear(rows);
        EXPECT_FALSE(heard.empty());
        expectSame(hearRecording(recorded(GetParam(), heard)), heard);
    }
}

/// What the simulated radio reports of a dongle that has its address where the row says.
AdvertisingReport simulated(const AirRow& row) {
    using Payload = simulator::Dongle::Payload;
    const std::map<std::string, Payload> payloads = {
        {"data", Payload::data}, {"name", Payload::name}, {"both", Payload::both}};
    simulator::Dongle dongle = simulator::dongle(1, {50, 51});
    dongle.address = row.simulatorAddress;
    dongle.payload = payloads.at(row.simulatorPayload);
    KeptLines console;
    const JSONSerialization JSON;
    Ears ears;
    simulator::SimulatorPlatform platform(console, JSON, nullptr, simulator::quietScene({dongle}));
    const auto radio = platform.centralManager(ears);
    ears.listen(platform.monitor());
    radio->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    platform.timeline().runUntil(1s);
    ears.stop(platform.monitor());
    return ears.reports.at(0);
}

TEST_P(WhatIsRecorded, IsTheSameOfADongleOfTheSimulatorAndOfOneOnTheAir) {
    int dongles = 0;
    for (const AirRow& row : readReportTable()) {
        if (row.simulatorAddress.empty()) continue;
        ++dongles;
        const AdvertisingReport report = simulated(row);
        EXPECT_EQ(Said::of(report), row.heard) << row.what;
        expectSame(hearRecording(recorded(GetParam(), {report})), {report});
    }
    EXPECT_EQ(dongles, 3);
}

INSTANTIATE_TEST_SUITE_P(As, WhatIsRecorded, testing::ValuesIn(forms),
                         [](const auto& form) { return form.param.name; });

}  // namespace
}  // namespace nearcast::contract
