// SPDX-License-Identifier: Apache-2.0
#include "scenario/EventComparer.h"
#include "scenario/RunInChild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace nearcast::scenario {
namespace {

const std::string delegate =
    R"({"do":"setDelegate","implements":["didDiscoverPort:deviceType:MACAddr:RSSI:","didUpdateState:MACAddr:"]})";

/// "EVENT AT" of the returned, console and report events.
std::vector<std::string> shownBy(const std::vector<std::string>& lines) {
    const Outcome outcome = runInChild(lines, {});
    EXPECT_TRUE(outcome.clean) << outcome.problem;
    std::vector<std::string> shown;
    for (const Event& event : readEvents(outcome.output)) {
        const std::string kind = event["event"];
        if (kind == "central") continue;
        const std::string what = kind == "return" ? event["of"].get<std::string>() : kind;
        shown.push_back(what + " " + event["at"].dump());
    }
    return shown;
}

using Shown = std::vector<std::string>;

TEST(Runner, ShowsNoTracesAndNoLocksUnlessAsked) {
    const std::vector<std::string> lines{delegate, R"({"do":"startScan"})"};
    const auto count = [&](lab::RunOptions options, const std::string& kind) {
        const auto events = readEvents(runInChild(lines, options).output);
        return std::count_if(events.begin(), events.end(), [&](const Event& event) { return event["event"] == kind; });
    };
    EXPECT_EQ(count({.trace = false, .locks = false}, "trace"), 0);
    EXPECT_EQ(count({.trace = false, .locks = false}, "lock"), 0);
    EXPECT_EQ(count({.trace = true, .locks = false}, "lock"), 0);
    EXPECT_GT(count({.trace = true, .locks = false}, "trace"), 0);
    EXPECT_EQ(count({.trace = false, .locks = true}, "trace"), 0);
    EXPECT_EQ(count({.trace = false, .locks = true}, "lock"), 4);
}

TEST(Runner, AnEmptyScenarioShowsNothing) { EXPECT_EQ(shownBy({}), Shown{}); }

TEST(Runner, ALineWhoseTimeHasPassedHappensNow) {
    EXPECT_EQ(shownBy({R"({"at":5,"do":"getRSSI"})", R"({"at":2,"do":"getRSSI"})", R"({"do":"getRSSI"})",
                       R"({"at":6,"do":"getRSSI"})"}),
              (Shown{"getRSSI 5.0", "getRSSI 5.0", "getRSSI 5.0", "getRSSI 6.0"}));
}

TEST(Runner, LinesThatFallIntoASleepHappenInsideItItsLastMomentIncluded) {
    EXPECT_EQ(shownBy({R"({"do":"radio","state":0})", R"({"do":"startScan"})", R"({"at":0.05,"do":"getRSSI"})",
                       R"({"at":1.0,"do":"getRSSI"})", R"({"at":1.000001,"do":"getRSSI"})"}),
              (Shown{"getRSSI 0.05", "getRSSI 1.0", "console 1.0", "startScan 1.0", "getRSSI 1.000001"}));
}

TEST(Runner, ACallThatSleepsInsideAnothersSleepEndsFirstAndMakesItLate) {
    EXPECT_EQ(shownBy({R"({"do":"radio","state":0})", R"({"do":"startScan"})",
                       R"({"at":0.95,"do":"calibrateActionArea","MACAddr":"A"})"}),
              (Shown{"calibrateActionArea 7.95", "console 7.95", "startScan 7.95"}));
}

/// Starts that each wait for the radio inside the wait of the one before.
std::vector<std::string> nestedStarts(std::size_t count) {
    std::vector<std::string> lines{R"({"do":"radio","state":0})"};
    lines.insert(lines.end(), count, R"({"do":"startScan"})");
    return lines;
}

TEST(Runner, FiveHundredCallsMayRunInsideOneAnothersSleep) {
    const Outcome outcome = runInChild(nestedStarts(500), {});
    EXPECT_TRUE(outcome.clean) << outcome.problem;
    EXPECT_EQ(readEvents(outcome.output).size(), 2U * 500U);
}

TEST(Runner, OneMoreEndsTheRunAndNamesItsLine) {
    const Outcome outcome = runInChild(nestedStarts(100'000), {});
    EXPECT_NE(outcome.problem.find(":502: "), std::string::npos) << outcome.problem;
}

TEST(Runner, ASleepRunsPastTheLastLine) {
    EXPECT_EQ(shownBy({R"({"do":"calibrateActionArea","MACAddr":"A"})"}), Shown{"calibrateActionArea 7.0"});
}

TEST(Runner, NothingMovesTheClockPastTheLastLine) {
    EXPECT_EQ(shownBy({delegate, R"({"do":"startScan","samplingNumber":1})",
                       R"({"do":"advertise","manufacturerData":"FFFF001122AABBCC","RSSI":-60})",
                       R"({"at":4.999999,"do":"end"})"}),
              Shown{"startScan 0.0"});
}

TEST(Runner, TimersThatAreDueWithALineFireBeforeIt) {
    EXPECT_EQ(shownBy({delegate, R"({"do":"startScan"})",
                       R"({"do":"advertise","manufacturerData":"FFFF001122AABBCC","RSSI":-60})",
                       R"({"at":5,"do":"getRSSI","MACAddr":"00:11:22:AA:BB:CC"})"}),
              (Shown{"startScan 0.0", "didUpdateState 5.0", "getRSSI 5.0"}));
}

TEST(Runner, EverySweepAndRestartOfADayIsDoneThoughNothingHappens) {
    const std::vector<std::string> day{delegate, R"({"do":"startScan"})", R"({"at":86400,"do":"end"})"};
    constexpr int restarts = 86400 / 120;
    constexpr int sweeps = 86400 / 5;
    const auto plain = readEvents(runInChild(day, {}).output);
    EXPECT_EQ(std::count_if(plain.begin(), plain.end(), [](const Event& event) { return event["event"] == "central"; }),
              2 * (1 + restarts));
    const auto withLocks = readEvents(runInChild(day, {.trace = false, .locks = true}).output);
    EXPECT_EQ(std::count_if(
                  withLocks.begin(), withLocks.end(),
                  [](const Event& event) { return event["event"] == "lock" && event["name"] == "_lockRssiDataFlag"; }),
              2 * sweeps);
}

TEST(Runner, ABrokenLineEndsTheRunAndLeavesWhatHappenedBefore) {
    const Outcome outcome = runInChild({R"({"do":"getRSSI"})", R"({"do":"dance"})", R"({"do":"getRSSI"})"}, {});
    EXPECT_EQ(readEvents(outcome.output).size(), 1U);
    EXPECT_NE(outcome.problem.find(":2: unknown \"do\": \"dance\""), std::string::npos) << outcome.problem;
}

TEST(Runner, ABrokenLineInsideASleepEndsTheRunAtItsOwnTime) {
    const Outcome outcome = runInChild({R"({"do":"calibrateActionArea","MACAddr":"A"})", R"({"at":1,"do":"getRSSI"})",
                                        R"({"at":2,"do":"dance"})", R"({"at":3,"do":"getRSSI"})"},
                                       {.trace = true, .locks = true});
    const auto events = readEvents(outcome.output);
    ASSERT_FALSE(events.empty());
    EXPECT_LE(events.back()["at"].get<double>(), 2.0) << "nothing of the rest of the calibration is shown";
    EXPECT_NE(outcome.problem.find(":3: "), std::string::npos) << outcome.problem;
}

TEST(Runner, ARaisedErrorEndsNothing) {
    const auto events = readEvents(runInChild({R"({"do":"addSettingForPrinterPortName"})",
                                               R"({"do":"deserializeSettings","data":"[]"})", R"({"do":"getRSSI"})"},
                                              {})
                                       .output);
    ASSERT_EQ(events.size(), 4U);
    EXPECT_EQ(events[1]["name"], "PortException");
    EXPECT_EQ(events[2]["event"], "raise");
    EXPECT_EQ(events[2]["name"], "std::invalid_argument");
    EXPECT_EQ(events[3]["event"], "return");
}

TEST(Runner, ACallWithoutAResultPrintsNone) {
    EXPECT_EQ(
        shownBy({R"({"do":"sharedManager"})", R"({"do":"stopScan"})", R"({"do":"setSettings"})",
                 R"({"do":"removeSettingWithPortName"})", delegate, R"({"do":"radio","state":3})", R"({"do":"end"})"}),
        Shown{});
}

}  // namespace
}  // namespace nearcast::scenario
