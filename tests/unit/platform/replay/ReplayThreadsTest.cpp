// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManualPace.h"
#include "platform/replay/ReplayPlatform.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <thread>

namespace nearcast::replay {

namespace {

using namespace std::chrono_literals;

/// A radio whose timeline another thread drives, as far as the test lets it.
class ReplayThreads : public ::testing::Test {
protected:
    ~ReplayThreads() override {
        timeline->interrupt();
        awaitEnd();
    }

    void open(std::vector<RecordedItem> items, std::string damage = {}) {
        auto script = std::make_unique<Script>(std::move(items), std::move(damage));
        radio = std::make_unique<ReplayRadio>(listener, console, monitor, *timeline,
                                              Recording{"file", std::move(script), {}});
        driver = std::thread([this] { timeline->runUntil(Timeline::forever); });
    }
    void scan() { radio->scanForPeripheralsWithServices(std::vector{dongleUUID()}, {.allowDuplicates = true}); }
    /// Returns when the recording has ended.
    void awaitEnd() {
        if (driver.joinable()) driver.join();
    }

    KeptLines console;
    ManualPace* pace = new ManualPace;
    std::shared_ptr<Timeline> timeline = std::make_shared<Timeline>(console, std::unique_ptr<Pace>(pace));
    Listener listener{*timeline};
    RadioMonitor monitor{console, [this] { return NSDate(timeline->now()); }};
    std::unique_ptr<ReplayRadio> radio;
    std::thread driver;
};

TEST_F(ReplayThreads, WakesTheDriverWhenTheFirstScanBegins) {
    open({dongleReport(1'000, -1)});
    pace->awaitWaiting(Timeline::forever);
    pace->set(5ms);
    scan();
    pace->awaitWaiting(6ms);
    pace->set(6ms);
    awaitEnd();
    ASSERT_EQ(signalsOf(listener.deliveries), std::vector{-1});
    EXPECT_EQ(listener.deliveries[0].at, 6'000);
}

TEST_F(ReplayThreads, MayBeStoppedAndStartedWhileItPlays) {
    std::vector<RecordedItem> items;
    for (int i = 0; i < 2'000; ++i) items.emplace_back(dongleReport(i * 10, -1));
    open(std::move(items), "the end");
    scan();
    pace->set(1s);
    for (int i = 0; i < 200; ++i) {
        radio->stopScan();
        scan();
    }
    awaitEnd();
    EXPECT_LE(listener.deliveries.size(), 2'000U);
    EXPECT_EQ(radio->failure(), "file: damaged at byte 77: the end");
}

}  // namespace

}  // namespace nearcast::replay
