// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezRadio.h"

#include "doubles/KeptLines.h"
#include "doubles/MadeDescriptors.h"
#include "doubles/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace nearcast::bluez {

namespace {

class NoDelegate : public CBCentralManagerDelegate {
public:
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {}
};

/// A radio on a machine that has no system bus.
class ThreadedBluezRadioTest : public testing::Test {
protected:
    ThreadedBluezRadioTest() {
        setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder_.file("bus")).c_str(), 1);
        monitor.setHealthChanged([this](const RadioHealth& health) {
            if (onHealth) onHealth();
            const MutexLock lock(mutex_);
            why_ = health.why;
            changed_.notify_all();
        });
    }

    std::string awaitReason() {
        MutexLock lock(mutex_);
        while (why_.empty()) changed_.wait(lock.native());
        return why_;
    }
    void awaitReason(const std::string& why) {
        MutexLock lock(mutex_);
        while (why_ != why) changed_.wait(lock.native());
    }

    KeptLines console;
    NoDelegate delegate;
    RadioMonitor monitor{console, [] { return NSDate(SystemClock::now()); }};
    std::function<void()> onHealth;  ///< on the radio's thread; set before it
    std::once_flag closed;

private:
    const TemporaryFolder folder_;
    Mutex mutex_;
    std::condition_variable changed_;
    std::string why_ NEARCAST_GUARDED_BY(mutex_);
};

TEST_F(ThreadedBluezRadioTest, IsUnknownAndSaysWhyWithoutASystemBus) {
    ThreadedBluezRadio radio(delegate, console, monitor, "");
    EXPECT_EQ(awaitReason(), "there is no connection to the system bus: No such file or directory");
    EXPECT_EQ(radio.state(), CBManagerStateUnknown);
    EXPECT_TRUE(console.lines().empty());
}

TEST_F(ThreadedBluezRadioTest, HasNothingToWaitForWithoutASystemBus) {
    const SdBus bus(console);
    EXPECT_EQ(bus.descriptor(), -1);
    EXPECT_EQ(bus.left(), std::nullopt);
}

TEST_F(ThreadedBluezRadioTest, EndsAtOnceHoweverYoungItIs) {
    for (int i = 0; i < 20; ++i) ThreadedBluezRadio(delegate, console, monitor, "");
    EXPECT_TRUE(console.lines().empty());
}

TEST_F(ThreadedBluezRadioTest, EndsWithALineWhereItsDescriptorsWereClosed) {
    const MadeDescriptors made;
    onHealth = [&] { std::call_once(closed, [&] { made.closeAll(); }); };
    ThreadedBluezRadio radio(delegate, console, monitor, "");
    console.await(1);
    EXPECT_EQ(console.lines(),
              std::vector<std::string>{"The thread of the radio has ended: its descriptors were closed"});
    awaitReason("the radio's thread has ended: its descriptors were closed");
    EXPECT_EQ(radio.state(), CBManagerStateUnknown);
}

/// The next file that is opened gets the number of one that was closed. This one is always readable.
TEST_F(ThreadedBluezRadioTest, EndsWithALineWhereItsDescriptorsAreAnothersFiles) {
    const MadeDescriptors made;
    onHealth = [&] {
        std::call_once(closed, [&] {
            made.closeAll();
            open("/dev/null", O_RDONLY | O_CLOEXEC);
            open("/dev/null", O_RDONLY | O_CLOEXEC);
        });
    };
    ThreadedBluezRadio radio(delegate, console, monitor, "");
    console.await(1);
    EXPECT_EQ(console.lines(),
              std::vector<std::string>{"The thread of the radio has ended: its descriptors were closed"});
}

TEST_F(ThreadedBluezRadioTest, IsStartedAndStoppedFromManyThreads) {
    ThreadedBluezRadio radio(delegate, console, monitor, "");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&radio] {
            for (int turn = 0; turn < 200; ++turn) {
                radio.scanForPeripheralsWithServices(std::nullopt, ScanOptions{});
                radio.stopScan();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(radio.state(), CBManagerStateUnknown);
    EXPECT_TRUE(console.lines().empty());
}

}  // namespace

}  // namespace nearcast::bluez
