// SPDX-License-Identifier: Apache-2.0
#include "common/radio/Readiness.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"
#include "watch/ScanStart.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::cli {
namespace {

class Lines : public Console {
public:
    void NSLog(std::string_view line) noexcept override { said.emplace_back(line); }
    std::vector<std::string> said;
};

class ConsoleView : public WatchView {
public:
    explicit ConsoleView(std::vector<std::string>& said) : said_(said) {}
    void report(const WatchReport& /*report*/) override {}
    void silent(double /*at*/, std::string_view /*portName*/, std::string_view /*MACAddr*/) override {}
    void console(std::string_view line) override { said_.emplace_back(line); }
    void health(double /*at*/, const RadioHealth& /*health*/) override { said_.emplace_back("health"); }
    void end(const WatchSummary& /*summary*/) override {}

private:
    std::vector<std::string>& said_;
};

class ScanStartTest : public testing::Test {
protected:
    void SetUp() override {
        auto platform = std::make_unique<VirtualPlatform>(console_, JSON_);
        platform_ = platform.get();
        RadioMonitor* const monitor = &platform->monitor();
        monitor->setHealthChanged([this](const RadioHealth& health) {
            if (tells_) session_.health(health);
        });
        choosePlatform({nullptr, std::move(platform), nullptr, monitor});
        session_.hold();
        session_.begin();
        QXNearcastManager::sharedManager();
    }
    void TearDown() override {
        EXPECT_EQ(console_.said, std::vector<std::string>()) << "the manager is not asked in vain";
        platform_->monitor().setHealthChanged({});
    }

    void become(CBManagerState state) { platform_->radio()->setState(state); }
    void pass(double seconds) {
        platform_->timeline().sleep(std::chrono::microseconds(static_cast<std::int64_t>(seconds * 1e6)));
    }
    [[nodiscard]] bool scans() const { return platform_->radio()->scanning(); }

    Lines console_;
    JSONSerialization JSON_;
    VirtualPlatform* platform_ = nullptr;
    bool tells_ = true;
    int woken_ = 0;
    std::vector<std::string> said_;
    WatchSession session_{std::make_unique<ConsoleView>(said_), [this] { ++woken_; }};
};

TEST_F(ScanStartTest, BeginsAtOnceByARadioThatIsOn) {
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    EXPECT_TRUE(scans());
    EXPECT_EQ(said_, std::vector<std::string>());
    EXPECT_NO_THROW(start.requireScan());
}

TEST_F(ScanStartTest, WaitsForARadioThatIsOffAndSaysSoOnce) {
    become(CBManagerStatePoweredOff);
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    start.look();
    EXPECT_FALSE(scans());
    EXPECT_EQ(said_, (std::vector<std::string>{
                         "health", "waiting for the radio: the radio is powered off; 'nearcast doctor' tells more"}));
    EXPECT_THROW(start.requireScan(), std::runtime_error);
    become(CBManagerStatePoweredOn);
    EXPECT_EQ(woken_, 1) << "what is waited for has come";
    start.look();
    EXPECT_TRUE(scans());
    EXPECT_NO_THROW(start.requireScan());
}

TEST_F(ScanStartTest, GoesOnWhateverBecomesOfARadioThatWasOn) {
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    become(CBManagerStateUnsupported);
    EXPECT_NO_THROW(start.look());
    EXPECT_EQ(woken_, 0);
}

TEST_F(ScanStartTest, EndsWhereTheRadioIsMissingAndShowsNothing) {
    for (const auto state : {CBManagerStateUnsupported, CBManagerStateUnauthorized}) {
        become(state);
        ScanStart start(session_, QXNearcastManager::sharedManager());
        EXPECT_THROW(start.look(), RadioMissing);
    }
    EXPECT_EQ(said_, std::vector<std::string>());
}

TEST_F(ScanStartTest, GoesOnWaitingForOneThatCameWithoutAnAdapter) {
    become(CBManagerStateUnknown);
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    become(CBManagerStateUnsupported);
    EXPECT_NO_THROW(start.look());
    become(CBManagerStatePoweredOn);
    start.look();
    EXPECT_TRUE(scans());
}

TEST_F(ScanStartTest, ARadioThatIsComingUpIsGivenThreeSeconds) {
    become(CBManagerStateResetting);
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    EXPECT_EQ(said_, std::vector<std::string>());
    EXPECT_DOUBLE_EQ(start.patience(), 3);
    pass(2.9);
    start.look();
    EXPECT_EQ(said_, std::vector<std::string>());
    EXPECT_NEAR(start.patience(), 0.1, 1e-9);
    pass(0.1);
    start.look();
    EXPECT_EQ(said_.size(), 2U);
    EXPECT_GT(start.patience(), 1e9) << "nothing is to be decided any more";
}

TEST_F(ScanStartTest, ARadioThatHasToldNothingYetIsGivenThreeSeconds) {
    tells_ = false;
    become(CBManagerStateUnknown);
    ScanStart start(session_, QXNearcastManager::sharedManager());
    start.look();
    EXPECT_EQ(said_, std::vector<std::string>());
    pass(3);
    start.look();
    EXPECT_EQ(said_,
              std::vector<std::string>{"waiting for the radio: the radio is unknown; 'nearcast doctor' tells more"});
}

}  // namespace
}  // namespace nearcast::cli
