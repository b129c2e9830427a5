// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLines.h"
#include "platform/replay/ReplayPlatform.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string>

namespace nearcast::replay {

namespace {

/// Recordings that others made; they lie beside the checkout, not in it.
std::filesystem::path captures() {
    return std::filesystem::path(NEARCAST_TEST_SOURCE_DIR) / "../../shared/data/captures";
}

struct Capture {
    const char* file;
    std::uint64_t reports;
    std::uint64_t malformed;
    std::size_t senders;
};

constexpr Capture known[] = {
    {"linux_monitor_93s.pcapng", 1068, 0, 28},
    {"phone_extended_69s.btsnoop", 465, 120, 287},
};

class RealCaptures : public ::testing::TestWithParam<Capture> {
protected:
    void SetUp() override {
        if (std::filesystem::exists(path())) return;
        std::cerr << "\n*** NOT TESTED: there is no " << path() << " ***\n\n";
        GTEST_SKIP() << "there is no " << path();
    }
    [[nodiscard]] static std::string path() { return (captures() / GetParam().file).string(); }
};

TEST_P(RealCaptures, HoldTheReportsThatAnotherReaderCounts) {
    const ImportResult result = importRecording(path(), {}, [](std::string_view) {});
    EXPECT_EQ(result.reports, GetParam().reports);
    EXPECT_EQ(result.malformed, GetParam().malformed);
    EXPECT_FALSE(result.damage) << *result.damage;
}

TEST_P(RealCaptures, HoldTheSendersThatAnotherReaderCounts) {
    const auto reader = openRecording(path());
    std::set<DeviceAddress> senders;
    std::chrono::microseconds last{0};
    while (const auto item = reader->next()) {
        senders.insert(std::get<RecordedReport>(*item).report.address.value());
        EXPECT_GE(timeOf(*item), last);
        last = timeOf(*item);
    }
    EXPECT_EQ(senders.size(), GetParam().senders);
}

/// Everything that a radio delivers of a recording.
std::vector<Delivery> played(const std::string& file, const RecordingOptions& options) {
    KeptLines console;
    const auto timeline = std::make_shared<Timeline>(console);
    Listener listener(*timeline);
    RadioMonitor monitor(console, [&] { return NSDate(timeline->now()); });
    ReplayRadio radio(listener, console, monitor, *timeline, Recording{file, openRecording(file), options});
    radio.scanForPeripheralsWithServices(std::vector{dongleUUID()}, {.allowDuplicates = true});
    timeline->runToLastHappening();
    EXPECT_EQ(radio.failure(), "");
    return listener.deliveries;
}

TEST_P(RealCaptures, PlayTheSameImportedAndNot) {
    const std::string imported = ::testing::TempDir() + "RealCaptures_" + GetParam().file + ".jsonl";
    for (const RecordingOptions options : {RecordingOptions{.anyService = true}, RecordingOptions{.asDongles = true}}) {
        std::ofstream out(imported);
        importRecording(path(), options, [&](std::string_view line) { out << line << "\n"; });
        out.close();
        const auto direct = played(path(), options);
        EXPECT_EQ(direct.size(), GetParam().reports);
        EXPECT_EQ(played(imported, {}), direct);
    }
    std::filesystem::remove(imported);
}

std::string nameOf(const ::testing::TestParamInfo<Capture>& capture) {
    const std::string file = capture.param.file;
    return file.substr(0, file.find('_'));
}

INSTANTIATE_TEST_SUITE_P(All, RealCaptures, ::testing::ValuesIn(known), nameOf);

}  // namespace

}  // namespace nearcast::replay
