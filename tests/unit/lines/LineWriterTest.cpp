// SPDX-License-Identifier: Apache-2.0
#include "lines/Line.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::lines {
namespace {

using namespace std::chrono_literals;

Line advertisement(Time at, Advertise heard) { return {at, std::move(heard)}; }

TEST(LineWriter, WritesWhatRecordingsAreMadeOf) {
    EXPECT_EQ(writeLine({5s, End{}}), R"({"at": 5.0, "do": "end"})");
    EXPECT_EQ(writeLine({276ms, RadioState{4}}), R"({"at": 0.276, "do": "radio", "state": 4})");
    Advertise heard;
    heard.RSSI = -60;
    EXPECT_EQ(writeLine(advertisement(0s, heard)),
              R"({"at": 0.0, "do": "advertise", "name": null, "manufacturerData": null, "RSSI": -60})");
    heard.name = "a\"é";
    heard.manufacturerData = {0xff, 0x0a};
    heard.services = {"180F", "x"};
    EXPECT_EQ(writeLine(advertisement(1us, heard)),
              R"({"at": 0.000001, "do": "advertise", "name": "a\"é", "manufacturerData": "FF0A", "RSSI": -60, )"
              R"("services": ["180F", "x"]})");
}

TEST(LineWriter, RefusesWhatNoRecordingHolds) {
    EXPECT_THROW(writeLine({0s, StopScan{}}), std::logic_error);
    EXPECT_THROW(writeLine({0s, SetDelegate{}}), std::logic_error);
}

TEST(LineWriter, IsReadBackAsItWas) {
    std::mt19937 engine(3);
    const auto below = [&](std::uint32_t count) { return static_cast<std::uint32_t>(engine() % count); };
    const std::vector<std::string> names{"", "Thermo", "é😀", "\n\t\x01\"\\", std::string("a\0b", 3)};
    for (int count = 0; count < 2000; ++count) {
        Advertise heard;
        if (below(3) != 0) heard.name = names[below(5)];
        if (below(3) != 0) heard.manufacturerData.emplace(below(40), static_cast<std::uint8_t>(below(256)));
        if (below(3) != 0) heard.services.emplace(below(3), names[below(5)]);
        heard.RSSI = static_cast<std::int32_t>(engine());
        const Time at(static_cast<std::int64_t>(engine()) * below(400'000));
        const Line back = parseLine(writeLine(advertisement(at, heard)), 1us);
        const auto& same = std::get<Advertise>(back.action);
        ASSERT_EQ(back.at, at);
        ASSERT_EQ(same.name, heard.name);
        ASSERT_EQ(same.manufacturerData, heard.manufacturerData);
        ASSERT_EQ(same.services, heard.services);
        ASSERT_EQ(same.RSSI, heard.RSSI);
    }
}

TEST(LineWriter, WritesANameThatIsNotUTF8WithTheReplacementCharacter) {
    Advertise heard;
    heard.name = "a\xFF";
    const Line back = parseLine(writeLine(advertisement(0s, heard)), 0us);
    EXPECT_EQ(std::get<Advertise>(back.action).name, "a\xEF\xBF\xBD");
}

}  // namespace
}  // namespace nearcast::lines
