// SPDX-License-Identifier: Apache-2.0
#include "platform/system/SystemPlatform.h"

#include "doubles/KeptLines.h"
#include "platform/json/JSONSerialization.h"
#include "platform/radio/NoRadio.h"
#include "platform/system/SystemClock.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace nearcast {

namespace {

using namespace std::chrono_literals;

class Nobody : public CBCentralManagerDelegate {
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {}
};

class SystemPlatformTest : public testing::Test {
protected:
    SystemPlatform::OpenRadio noRadio() {
        return [this](CBCentralManagerDelegate& delegate, RadioMonitor& monitor) {
            return std::make_unique<NoRadio>(delegate, console, monitor, "there is no radio");
        };
    }

    KeptLines console;
    JSONSerialization JSON;
    SystemPlatform platform{console, JSON, noRadio(), TimerService::Loop::application, nullptr};
    SystemDrive drive{platform};
};

TEST_F(SystemPlatformTest, TellsTheMachinesTime) {
    const auto before = SystemClock::now();
    const auto date = platform.date().sinceStart();
    EXPECT_GE(date, before);
    EXPECT_LE(date, SystemClock::now());
}

TEST_F(SystemPlatformTest, SleepsOnTheMachinesClock) {
    const auto before = platform.date().sinceStart();
    platform.usleep(2ms);
    EXPECT_GE(platform.date().sinceStart() - before, 2ms);
    platform.usleep(-1h);
}

TEST_F(SystemPlatformTest, OpensTheRadioThatWasBroughtAlong) {
    Nobody nobody;
    EXPECT_EQ(platform.centralManager(nobody)->state(), CBManagerStateUnsupported);
}

TEST_F(SystemPlatformTest, PassesOnWhatTheRadioThrows) {
    const auto refuses = [](CBCentralManagerDelegate&, RadioMonitor&) -> std::unique_ptr<CBCentralManager> {
        throw std::runtime_error("no adapter");
    };
    SystemPlatform broken(console, JSON, refuses, TimerService::Loop::application, nullptr);
    Nobody nobody;
    EXPECT_THROW(broken.centralManager(nobody), std::runtime_error);
}

TEST_F(SystemPlatformTest, HandsOnConsoleLinesAndJSON) {
    platform.NSLog("line");
    EXPECT_EQ(console.lines(), std::vector<std::string>{"line"});
    EXPECT_EQ(&platform.JSON(), &JSON);
}

TEST_F(SystemPlatformTest, RunsTimersForAsLongAsAsked) {
    int fired = 0;
    const auto before = SystemClock::now();
    platform.scheduledTimer(2ms, [&](NSTimer&) { ++fired; });
    EXPECT_TRUE(drive.runFor(7ms));
    EXPECT_GE(SystemClock::now() - before, 7ms);
    EXPECT_GE(fired, 1);
}

TEST_F(SystemPlatformTest, EndsARunThatIsInterrupted) {
    platform.scheduledTimer(2ms, [&](NSTimer&) { drive.interrupt(); });
    EXPECT_TRUE(drive.runFor(1h));
    EXPECT_TRUE(drive.failure().empty());
}

TEST_F(SystemPlatformTest, KeepsAnInterruptionForTheNextRun) {
    drive.interrupt();
    EXPECT_TRUE(drive.runFor(1h));
}

TEST_F(SystemPlatformTest, IsInterruptedByAnotherThread) {
    std::thread other([&] { drive.interrupt(); });
    EXPECT_TRUE(drive.runFor(1h));
    other.join();
}

TEST_F(SystemPlatformTest, HasADescriptorForTheApplicationsLoopAlone) {
    EXPECT_GE(drive.descriptor(), 0);
    SystemPlatform other(console, JSON, noRadio(), TimerService::Loop::ownThread, nullptr);
    SystemDrive itsDrive(other);
    EXPECT_EQ(itsDrive.descriptor(), -1);
    EXPECT_TRUE(itsDrive.runFor(1ms));
}

}  // namespace

}  // namespace nearcast
