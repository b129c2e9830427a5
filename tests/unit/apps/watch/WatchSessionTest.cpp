// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"
#include "watch/WatchSession.h"

#include <nearcast/Platform.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace nearcast::cli {
namespace {

class Silence : public Console {
public:
    void NSLog(std::string_view /*line*/) noexcept override {}
};

/// A view that notes what it was shown, and fails when it is told to.
class Notes : public WatchView {
public:
    struct Kept {
        std::vector<std::string> lines;
        std::vector<std::optional<double>> ages;
        std::optional<WatchSummary> summary;
        bool fails = false;
        bool showsTime = false;
    };
    explicit Notes(Kept& kept) : kept_(kept) {}

    void report(const WatchReport& report) override {
        if (kept_.fails) throw std::runtime_error("the disk is full");
        kept_.lines.push_back("report " + std::string(report.MACAddr));
        kept_.ages.push_back(report.age);
    }
    void silent(double /*at*/, std::string_view /*portName*/, std::string_view MACAddr) override {
        kept_.lines.push_back("silent " + std::string(MACAddr));
    }
    void tick(double /*at*/, const RadioHealth& /*health*/) override { kept_.lines.emplace_back("tick"); }
    void disturbed() override { kept_.lines.emplace_back("disturbed"); }
    void console(std::string_view line) override { kept_.lines.push_back("console " + std::string(line)); }
    void health(double at, const RadioHealth& health) override {
        kept_.lines.push_back("health " + std::to_string(at) + " since " + std::to_string(health.since));
    }
    [[nodiscard]] bool showsTime() const override { return kept_.showsTime; }
    void end(const WatchSummary& summary) override { kept_.summary = summary; }

private:
    Kept& kept_;
};

class WatchSessionTest : public testing::Test {
protected:
    void SetUp() override {
        auto platform = std::make_unique<VirtualPlatform>(console_, JSON_);
        timeline_ = &platform->timeline();
        setCurrentPlatform(std::move(platform));
        session_.begin();
    }

    void report(std::string_view address) { delegate()->didDiscoverPort("", QXDeviceTypeUnknown, address, -60); }
    void silent(std::string_view address) { delegate()->didUpdateState("", address); }
    std::shared_ptr<QXNearcastManagerDelegate> delegate() { return session_.delegate(); }
    void pass(int milliseconds) { timeline_->sleep(std::chrono::milliseconds(milliseconds)); }

    Silence console_;
    JSONSerialization JSON_;
    Timeline* timeline_ = nullptr;
    Notes::Kept kept_;
    int woken_ = 0;
    WatchSession session_{std::make_unique<Notes>(kept_), [this] { ++woken_; }};
};

TEST_F(WatchSessionTest, TheFirstReportOfADongleHasNoAge) {
    report("A");
    EXPECT_EQ(kept_.ages.at(0), std::nullopt);
}

TEST_F(WatchSessionTest, ALaterReportIsAsOldAsTheOneBeforeItOfTheSameDongle) {
    report("A");
    pass(250);
    report("B");
    pass(250);
    report("A");
    EXPECT_DOUBLE_EQ(kept_.ages.at(2).value(), 0.5);
}

TEST_F(WatchSessionTest, ADongleThatWasSilentBeginsAnew) {
    report("A");
    silent("A");
    report("A");
    EXPECT_EQ(kept_.ages.at(1), std::nullopt);
}

TEST_F(WatchSessionTest, TheSummaryCountsReportsDonglesAndSilences) {
    report("A");
    report("A");
    report("B");
    silent("A");
    report("A");
    pass(2000);
    session_.end();
    ASSERT_TRUE(kept_.summary);
    EXPECT_EQ(kept_.summary->reports, 4U);
    EXPECT_EQ(kept_.summary->dongles, 2U);
    EXPECT_EQ(kept_.summary->silences, 1U);
    EXPECT_DOUBLE_EQ(kept_.summary->seconds, 2);
}

TEST_F(WatchSessionTest, RemembersAsManyStrangersAsThereIsRoomFor) {
    for (std::size_t number = 0; number < mostStrangers; ++number) report("A" + std::to_string(number));
    report("A0");
    EXPECT_TRUE(kept_.ages.back()) << "known already";
    session_.end();
    EXPECT_EQ(kept_.summary->dongles, mostStrangers);
    EXPECT_FALSE(kept_.summary->moreDongles);
}

TEST_F(WatchSessionTest, ForgetsStrangersThatThereIsNoRoomFor) {
    for (std::size_t number = 0; number < mostStrangers; ++number) report("A" + std::to_string(number));
    report("B");
    report("B");
    EXPECT_FALSE(kept_.ages.back()) << "it is new each time";
    session_.end();
    EXPECT_EQ(kept_.summary->dongles, mostStrangers);
    EXPECT_TRUE(kept_.summary->moreDongles);
    EXPECT_EQ(kept_.summary->reports, mostStrangers + 2) << "it is counted and shown all the same";
    EXPECT_EQ(kept_.lines.back(), "report B");
}

TEST_F(WatchSessionTest, AlwaysRemembersARegisteredDevice) {
    for (std::size_t number = 0; number < mostStrangers; ++number) report("A" + std::to_string(number));
    delegate()->didDiscoverPort("BT:Bar", QXDeviceTypeDesktopPrinter, "B", -60);
    delegate()->didDiscoverPort("BT:Bar", QXDeviceTypeDesktopPrinter, "B", -60);
    EXPECT_TRUE(kept_.ages.back());
    session_.end();
    EXPECT_EQ(kept_.summary->dongles, mostStrangers + 1);
    EXPECT_FALSE(kept_.summary->moreDongles);
}

TEST_F(WatchSessionTest, TheHealthOfTheRadioIsTimedFromTheBeginOfTheWatch) {
    pass(1000);
    session_.begin();
    pass(500);
    RadioHealth health;
    health.since = Platform::now() - 0.25;
    session_.health(health);
    EXPECT_EQ(kept_.lines, (std::vector<std::string>{"health 0.500000 since 0.250000"}));
}

TEST_F(WatchSessionTest, AViewThatCannotBeWrittenEndsTheWatchWithItsReason) {
    kept_.fails = true;
    report("A");
    EXPECT_TRUE(session_.broken());
    EXPECT_EQ(woken_, 1);
    EXPECT_THROW(session_.end(), std::runtime_error);
}

TEST_F(WatchSessionTest, WhatTheRadioSaysIsKeptUntilItIsReleasedAndThenShownInItsOrder) {
    session_.hold();
    session_.console("a");
    session_.health({});
    session_.console("b");
    session_.tick();
    EXPECT_EQ(kept_.lines, std::vector<std::string>());
    session_.release();
    session_.console("c");
    ASSERT_EQ(kept_.lines.size(), 4U);
    EXPECT_EQ(kept_.lines[0], "console a");
    EXPECT_EQ(kept_.lines[1].find("health "), 0U);
    EXPECT_EQ(kept_.lines[2], "console b");
    EXPECT_EQ(kept_.lines[3], "console c");
}

TEST_F(WatchSessionTest, WhatWasKeptIsShownAtTheEnd) {
    session_.hold();
    session_.console("a");
    session_.end();
    EXPECT_EQ(kept_.lines, std::vector<std::string>{"console a"});
}

TEST_F(WatchSessionTest, TheRadiosNewsEndTheWaitOnlyWhereTheyAreAwaited) {
    EXPECT_FALSE(session_.radioHasTold());
    session_.health({});
    EXPECT_TRUE(session_.radioHasTold());
    EXPECT_EQ(woken_, 0);
    session_.awaitRadio(true);
    session_.health({});
    EXPECT_EQ(woken_, 1);
    session_.awaitRadio(false);
    session_.health({});
    EXPECT_EQ(woken_, 1);
}

TEST_F(WatchSessionTest, EverythingIsDrawnAnewAfterASuspension) {
    session_.drawAnew([this] {
        kept_.lines.emplace_back("stopped");
        return true;
    });
    EXPECT_EQ(kept_.lines, (std::vector<std::string>{"stopped", "disturbed", "tick"}));
}

TEST_F(WatchSessionTest, InATerminalOfAnotherSizeItIsDrawnOverWhatWasDrawn) {
    session_.drawAnew([] { return false; });
    EXPECT_EQ(kept_.lines, std::vector<std::string>{"tick"});
}

TEST_F(WatchSessionTest, NothingIsDrawnAfterTheEnd) {
    session_.end();
    kept_.lines.clear();
    session_.tick();
    EXPECT_EQ(kept_.lines, std::vector<std::string>());
}

TEST_F(WatchSessionTest, WaitsForMinutesWhereTheViewShowsNoTime) {
    EXPECT_GE(session_.pause(), 60);
    report("A");
    EXPECT_GE(session_.pause(), 60);
    EXPECT_EQ(woken_, 0);
}

TEST_F(WatchSessionTest, TicksOftenAfterATimeInWhichSomethingHappened) {
    kept_.showsTime = true;
    report("A");
    EXPECT_EQ(session_.pause(), WatchSession::busyTick);
    silent("A");
    EXPECT_EQ(session_.pause(), WatchSession::busyTick);
    session_.health({});
    EXPECT_EQ(session_.pause(), WatchSession::busyTick);
    EXPECT_EQ(session_.pause(), WatchSession::quietTick);
    EXPECT_EQ(woken_, 0);
}

TEST_F(WatchSessionTest, TheFirstThingThatHappensInAQuietTimeEndsTheWait) {
    kept_.showsTime = true;
    EXPECT_EQ(session_.pause(), WatchSession::quietTick);
    report("A");
    EXPECT_EQ(woken_, 1);
    report("A");
    EXPECT_EQ(woken_, 1);
}

TEST(WatchSummary, IsSaidInASentence) {
    EXPECT_EQ(sentence({20, 488, 6, 1}), "488 reports of 6 dongles in 20.0 s; 1 time a dongle fell silent.");
    EXPECT_EQ(sentence({1, 3, 2, 0, true}), "3 reports of more than 2 dongles in 1.0 s; 0 times a dongle fell silent.");
    EXPECT_EQ(sentence({0.5, 1, 1, 0}), "1 report of 1 dongle in 0.5 s; 0 times a dongle fell silent.");
}

}  // namespace
}  // namespace nearcast::cli
