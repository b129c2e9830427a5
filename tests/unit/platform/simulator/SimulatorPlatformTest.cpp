// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorPlatform.h"

#include "platform/json/JSONSerialization.h"
#include "unit/platform/simulator/SimulatorRadioFixture.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <utility>

namespace nearcast::simulator {

namespace {

/// A clock that the test sets.
class SetPace : public Pace {
public:
    bool waitUntil(std::chrono::microseconds time) override {
        std::unique_lock lock(mutex_);
        waiting_ = !woken_ && now_ < time;
        changed_.notify_all();
        changed_.wait(lock, [&] { return woken_ || now_ >= time; });
        waiting_ = false;
        return !std::exchange(woken_, false) && now_ >= time;
    }
    void wake() override {
        const std::lock_guard lock(mutex_);
        woken_ = true;
        changed_.notify_all();
    }
    /// Returns when somebody waits for a time to come.
    void awaitWait() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return waiting_; });
    }
    void set(std::chrono::microseconds now) {
        const std::lock_guard lock(mutex_);
        now_ = now;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::chrono::microseconds now_{0};
    bool woken_ = false;
    bool waiting_ = false;
};

/// Waits for reports on another thread than theirs.
class Counter : public CBCentralManagerDelegate {
public:
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {
        const std::lock_guard lock(mutex_);
        ++count_;
        counted_.notify_all();
    }
    void waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        counted_.wait(lock, [&] { return count_ >= count; });
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return count_;
    }

private:
    std::mutex mutex_;
    std::condition_variable counted_;
    std::size_t count_ = 0;
};

TEST(SimulatorPlatform, OpensItsRadioOnItsOwnTimeline) {
    LineConsole console;
    const JSONSerialization JSON;
    SimulatorPlatform platform(console, JSON, nullptr, quietScene({dongle(1, {51, 50})}));
    Listener listener(platform.timeline());
    const auto radio = platform.centralManager(listener);
    EXPECT_EQ(radio->state(), CBManagerStatePoweredOn);
    radio->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
    platform.usleep(std::chrono::seconds(2));
    EXPECT_EQ(platform.date().sinceStart(), std::chrono::seconds(2));
    EXPECT_GT(listener.reports.size(), 15U);
    EXPECT_EQ(platform.scene().dongles.size(), 1U);
    EXPECT_EQ(platform.failure(), "");
}

/// A thread that waits for nothing has to notice that a scan has begun on another.
TEST(SimulatorPlatform, HearsAScanThatAnotherThreadStarts) {
    LineConsole console;
    const JSONSerialization JSON;
    auto ownPace = std::make_unique<SetPace>();
    SetPace& pace = *ownPace;
    Counter counter;
    std::unique_ptr<CBCentralManager> radio;
    const Scene scene = quietScene({dongle(1, {51, 50})});
    {
        SimulatorPlatform platform(console, JSON, std::move(ownPace), scene);
        radio = platform.centralManager(counter);
        platform.timeline().driveFromThread();
        pace.awaitWait();
        radio->scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
        pace.set(std::chrono::seconds(3));
        counter.waitFor(advertisements(scene, 3).size());
    }
    EXPECT_EQ(counter.count(), advertisements(scene, 3).size());
}

}  // namespace

}  // namespace nearcast::simulator
