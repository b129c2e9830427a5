// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciRadio.h"

#include "doubles/KeptLines.h"
#include "doubles/MadeDescriptors.h"
#include "doubles/hci/FakeHci.h"
#include "platform/hci/HciPacket.h"
#include "platform/system/SystemClock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;

/// Counts what a radio tells, and lets others wait for it.
class Listener : public CBCentralManagerDelegate {
public:
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {
        const MutexLock lock(mutex_);
        changed_.notify_all();
    }
    void centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {
        if (onReport) onReport(central);
        const MutexLock lock(mutex_);
        ++reports_;
        changed_.notify_all();
    }
    void await(const std::function<bool(int reports)>& condition) {
        MutexLock lock(mutex_);
        while (!condition(reports_)) changed_.wait(lock.native());
    }
    void awaitReports(int count) {
        await([count](int reports) { return reports >= count; });
    }
    int reports() {
        const MutexLock lock(mutex_);
        return reports_;
    }

    std::function<void(CBCentralManager& central)> onReport;  ///< set before a scan

private:
    Mutex mutex_;
    std::condition_variable changed_;
    int reports_ NEARCAST_GUARDED_BY(mutex_) = 0;
};

/// The radio on a thread of its own. The machine is a fake, so nothing here waits for time to pass.
class ThreadedHciRadioTest : public testing::Test {
protected:
    void open() {
        radio = std::make_unique<ThreadedHciRadio>(listener, console, monitor, machine.port(), machine.service(),
                                                   HciTarget{});
        listener.await([this](int) { return radio->state() == CBManagerStatePoweredOn; });
    }
    void scan() {
        radio->scanForPeripheralsWithServices(std::nullopt, ScanOptions{.allowDuplicates = true});
        machine.await([](FakeController& controller) { return controller.scans(); });
    }

    FakeHci machine;
    KeptLines console;
    RadioMonitor monitor{console, [] { return NSDate(SystemClock::now()); }};
    Listener listener;
    std::unique_ptr<ThreadedHciRadio> radio;
};

TEST_F(ThreadedHciRadioTest, BecomesPoweredOnByItself) {
    open();
    EXPECT_EQ(monitor.health().state, CBManagerStatePoweredOn);
    EXPECT_FALSE(machine.scans());
}

TEST_F(ThreadedHciRadioTest, TellsWhatIsHeardOnAThreadOfItsOwn) {
    std::atomic<std::thread::id> thread;
    listener.onReport = [&](CBCentralManager&) { thread = std::this_thread::get_id(); };
    open();
    scan();
    machine.advertise({});
    listener.awaitReports(1);
    EXPECT_NE(thread.load(), std::thread::id());
    EXPECT_NE(thread.load(), std::this_thread::get_id());
    EXPECT_EQ(monitor.health().lastReportAge.has_value(), true);
}

TEST_F(ThreadedHciRadioTest, EndsTheScanOfTheController) {
    open();
    scan();
    radio->stopScan();
    machine.await([](FakeController& controller) { return !controller.scans(); });
    EXPECT_EQ(listener.reports(), 0);
}

TEST_F(ThreadedHciRadioTest, CanBeStoppedFromInsideAReport) {
    listener.onReport = [](CBCentralManager& central) { central.stopScan(); };
    open();
    scan();
    for (int i = 0; i < 10; ++i) machine.advertise({});
    machine.await([](FakeController& controller) { return !controller.scans(); });
    EXPECT_EQ(listener.reports(), 1);
}

TEST_F(ThreadedHciRadioTest, CanBeStoppedWhileAReportIsUnderWay) {
    std::atomic<bool> inside{false};
    std::atomic<bool> stopped{false};
    listener.onReport = [&](CBCentralManager&) {
        inside = true;
        inside.notify_all();
        stopped.wait(false);
    };
    open();
    scan();
    machine.advertise({});
    machine.advertise({});
    inside.wait(false);
    radio->stopScan();  // does not wait for the report, which may want what the caller holds
    stopped = true;
    stopped.notify_all();
    machine.await([](FakeController& controller) { return !controller.scans(); });
    EXPECT_EQ(listener.reports(), 1);
}

TEST_F(ThreadedHciRadioTest, TellsTheLossOfItsAdapter) {
    open();
    machine.unplug();
    listener.await([this](int) { return radio->state() == CBManagerStateUnsupported; });
    EXPECT_NE(monitor.health().why.find("there is no hci0"), std::string::npos);
}

TEST_F(ThreadedHciRadioTest, GoesOnAfterAHandlerThatThrows) {
    std::atomic<int> calls{0};
    listener.onReport = [&](CBCentralManager&) {
        if (++calls == 1) throw std::runtime_error("the application failed");
    };
    open();
    scan();
    machine.advertise({});
    machine.advertise({});
    listener.awaitReports(1);
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_NE(console.lines()[0].find("the application failed"), std::string::npos);
}

TEST_F(ThreadedHciRadioTest, EndsWithALineWhereItsDescriptorsWereClosed) {
    const MadeDescriptors made;
    listener.onReport = [&](CBCentralManager&) { made.closeAll(); };
    open();
    scan();
    machine.advertise({});
    console.await(1);
    listener.await([this](int) { return radio->state() == CBManagerStateUnknown; });
    EXPECT_EQ(console.lines(),
              std::vector<std::string>{"The thread of the radio has ended: its descriptors were closed"});
    EXPECT_EQ(monitor.health().why, "the radio's thread has ended: its descriptors were closed");
}

/// The next file that is opened gets the number of one that was closed. This one is always readable.
TEST_F(ThreadedHciRadioTest, EndsWithALineWhereItsDescriptorsAreAnothersFiles) {
    const MadeDescriptors made;
    listener.onReport = [&](CBCentralManager&) {
        made.closeAll();
        for (int i = 0; i < 3; ++i) ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    };
    open();
    scan();
    machine.advertise({});
    console.await(1);
    EXPECT_EQ(console.lines(),
              std::vector<std::string>{"The thread of the radio has ended: its descriptors were closed"});
}

TEST_F(ThreadedHciRadioTest, GivesTheControllerBackAtItsEnd) {
    open();
    scan();
    EXPECT_TRUE(machine.opened());
    radio.reset();
    EXPECT_FALSE(machine.opened());
}

TEST_F(ThreadedHciRadioTest, LeavesTheControllerOffAtItsEndAsItWas) {
    machine.runService(true);
    open();
    radio.reset();
    EXPECT_EQ(machine.serviceAsked(), 1);
    machine.serve();
    EXPECT_FALSE(machine.up());
}

/// The radio of a manager is never destroyed. The process is one of its own, and tells by its status.
TEST_F(ThreadedHciRadioTest, LeavesTheControllerOffAtTheEndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [this] {
        machine.runService(true);
        open();
        // The radio's is older, so it has been called before.
        new ProcessEnd([this] { _exit(machine.opened() || machine.up() ? 1 : 42); });
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(42), "");
}

TEST_F(ThreadedHciRadioTest, LeavesTheControllerOffWhereAHandlerEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [this] {
        machine.runService(true);
        listener.onReport = [](CBCentralManager&) { std::exit(0); };
        open();
        new ProcessEnd([this] { _exit(machine.opened() || machine.up() ? 1 : 42); });
        scan();
        machine.advertise({});
        pause();
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(42), "");
}

TEST_F(ThreadedHciRadioTest, AgreesWithItsLastWishAfterManyFromSeveralThreads) {
    open();
    const auto wish = [this] {
        for (int i = 0; i < 200; ++i) {
            radio->scanForPeripheralsWithServices(std::nullopt, {});
            radio->stopScan();
        }
    };
    std::thread one(wish);
    std::thread other(wish);
    one.join();
    other.join();
    scan();
    machine.advertise({});
    listener.awaitReports(1);
    radio->stopScan();
    machine.await([](FakeController& controller) { return !controller.scans(); });
}

}  // namespace

}  // namespace nearcast::hci
