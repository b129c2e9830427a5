// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>

#include "core/Manager.h"
#include "doubles/Crossing.h"
#include "doubles/ManagerBench.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/Consoles.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Dongle.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <utility>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;
using doubles::Crosser;
using doubles::LockWatch;

constexpr std::string_view dongle = doubles::ManagerBench::dongle;
const std::string duplicate = "A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.";

/// A manager whose console is a function of the application's.
class ConsoleCalls : public testing::Test {
protected:
    ConsoleCalls() { manager_.init(); }
    ~ConsoleCalls() override {
        onLine_ = nullptr;
        manager_.stopScan();
    }
    ConsoleCalls(const ConsoleCalls&) = delete;
    ConsoleCalls& operator=(const ConsoleCalls&) = delete;

    void refuse() { EXPECT_THROW(manager_.addSettingForPrinterPortName({}, {}, false, {}, {}, {}), PortException); }
    void pass(std::chrono::microseconds duration) { platform_.timeline().sleep(duration); }
    void hear() {
        AdvertisingReport report;
        report.manufacturerData = doubles::ManagerBench::payloadOf(dongle);
        report.RSSI = -60;
        report.services.push_back(CBUUID::UUIDWithString(dongle::serviceUUID));
        platform_.radio()->advertise(report);
    }
    /// A delegate that is refused something when it is told of a silence.
    void beRefusedInASweep(int times) {
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didUpdateState = [this, times](std::string_view, std::string_view) {
            for (int time = 0; time < times; ++time) manager_.startScan();
        };
        manager_.setDelegate(std::move(delegate));
    }
    void makeUnserializable() {
        SettingRecord record;
        record.emplace("x", SettingValue::Bytes{std::byte{1}});
        manager_.setSettings(Settings{{"P", std::make_shared<const SettingRecord>(record)}});
    }
    /// A thread is inside the console's function when another one does `other`, which takes `lock` and has something to
    /// say; then the function makes its `call`.
    void cross(const std::string& lock, std::function<void()> other, const std::function<void()>& call) {
        std::binary_semaphore inside(0);
        LockWatch watch(lock);
        onLine_ = [&] {
            inside.release();
            watch.awaitTaken();
            call();
        };
        Crosser first([this] { refuse(); });
        inside.acquire();
        Crosser second(std::move(other));
        first.join();
        second.join();
    }

    std::function<void()> onLine_;  ///< at the first line
    Lines lines_;                   ///< guarded by the console's promise of one call at a time
    CallbackConsole console_{[this](std::string_view line) {
        lines_.emplace_back(line);
        if (const auto once = std::exchange(onLine_, nullptr)) once();
    }};
    const JSONSerialization JSON_{};
    VirtualPlatform platform_{console_, JSON_};
    Manager manager_{this, platform_};
};

TEST_F(ConsoleCalls, MayStopTheScanWhileAnotherThreadsStartIsRefused) {
    manager_.startScan();
    cross(
        "_lockStartScanFlag", [this] { EXPECT_FALSE(manager_.startScan()); }, [this] { manager_.stopScan(); });
    EXPECT_EQ(lines_, (Lines{"portName or MACAddr is nil", duplicate}));
}

TEST_F(ConsoleCalls, MayStopTheScanWhileAnotherThreadsCalibrationIsRefused) {
    manager_.startScan();
    cross(
        "_lockStartScanFlag", [this] { EXPECT_EQ(manager_.calibrateActionArea(dongle), 127); },
        [this] { manager_.stopScan(); });
    EXPECT_EQ(lines_.back(), duplicate);
}

TEST_F(ConsoleCalls, MayReadTheRegistryWhileAnotherThreadFindsItUnserializable) {
    makeUnserializable();
    cross(
        "_lockMutableSettingsFlag", [this] { EXPECT_EQ(manager_.serializedSettings(), std::nullopt); },
        [this] { EXPECT_EQ(manager_.getSettings()->size(), 1U); });
    ASSERT_EQ(lines_.size(), 2U);
    EXPECT_TRUE(lines_.back().ends_with(" is not JSONSerializable"));
}

TEST_F(ConsoleCalls, MayAskForASignalWhileTheDelegateIsRefusedSomethingInASweep) {
    beRefusedInASweep(1);
    manager_.startScan(1);
    hear();
    std::int32_t RSSI = 0;
    cross(
        "_lockRssiDataFlag", [this] { pass(5s); }, [&] { RSSI = manager_.getRSSI(dongle); });
    EXPECT_EQ(RSSI, 127) << "by then the sweep has forgotten the dongle";
    EXPECT_EQ(lines_.back(), duplicate);
}

TEST_F(ConsoleCalls, MayTraceWhileTheSinkIsRefusedSomethingOnAnotherThread) {
    std::binary_semaphore inside(0);
    std::binary_semaphore sinking(0);
    onLine_ = [&] {
        inside.release();
        sinking.acquire();
        manager_.getSettings();
    };
    Crosser first([this] { refuse(); });
    inside.acquire();
    LogWriter::Options options;
    options.synchronous = true;
    options.sink = [&](const LogRecord& record) {
        if (record.methodName != "-[QXNearcastManager getRSSI:]" || record.logType != QXLogTypePavixAPIStart) return;
        sinking.release();
        EXPECT_THROW(manager_.addSettingForPrinterPortName({}, {}, false, {}, {}, {}), PortException);
    };
    LogWriter::sharedInstance().start(std::move(options));
    Crosser second([this] { manager_.getRSSI(dongle); });
    first.join();
    second.join();
    LogWriter::sharedInstance().stop();
    EXPECT_EQ(lines_.size(), 2U);
}

TEST_F(ConsoleCalls, ComeAfterTheLocksAreReleasedAndBeforeTheOperationReturns) {
    manager_.startScan();
    doubles::Journal locks;
    locks.watchLocks();
    onLine_ = [&] { locks.add("called"); };
    manager_.startScan();
    locks.add("returned");
    EXPECT_EQ(locks.lines(), (Lines{"take _lockMutableSettingsFlag", "release _lockMutableSettingsFlag",
                                    "take _lockStartScanFlag", "release _lockStartScanFlag", "called", "returned"}));
}

TEST_F(ConsoleCalls, ComeInTheOrderOfTheirLines) {
    beRefusedInASweep(2);
    manager_.startScan(1);
    hear();
    Lines heldWhenCalled;
    doubles::Journal locks;
    locks.watchLocks();
    onLine_ = [&] { heldWhenCalled = locks.lines(); };
    pass(5s);
    EXPECT_EQ(lines_, (Lines{duplicate, duplicate}));
    ASSERT_FALSE(heldWhenCalled.empty());
    EXPECT_EQ(heldWhenCalled.back(), "release _lockRssiDataFlag") << "the sweep holds nothing any more";
}

TEST_F(ConsoleCalls, ComeBeforeANestedOperationReturnsWhereItsCallerHoldsNothing) {
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    std::size_t linesAtReturn = 0;
    delegate->didDiscoverPort = [&](std::string_view, QXDeviceType, std::string_view, std::int32_t) {
        manager_.startScan();
        linesAtReturn = lines_.size();
    };
    manager_.setDelegate(delegate);
    manager_.startScan(1);
    hear();
    hear();
    EXPECT_EQ(linesAtReturn, 1U);
}

TEST_F(ConsoleCalls, AreMadeOnTheThreadThatHasSomethingToSay) {
    manager_.startScan();
    std::thread::id caller;
    onLine_ = [&] { caller = std::this_thread::get_id(); };
    manager_.startScan();
    EXPECT_EQ(caller, std::this_thread::get_id());
}

TEST(ConsoleLines, StayWhereTheyAreWrittenAmongTracesAndLocks) {
    doubles::ManagerBench bench;
    bench.manager.startScan();
    bench.journal.watchLocks();
    bench.journal.watchTraces();
    bench.journal.clear();
    bench.manager.startScan();
    const Lines lines = bench.journal.lines();
    ASSERT_GE(lines.size(), 5U);
    EXPECT_EQ(Lines(lines.end() - 5, lines.end()),
              (Lines{"take _lockStartScanFlag", "trace 7 startScan: scanStart == YES, 1", "console " + duplicate,
                     "release _lockStartScanFlag", "trace 1 startScan: -> 0"}));
    bench.manager.stopScan();
}

}  // namespace
}  // namespace nearcast
