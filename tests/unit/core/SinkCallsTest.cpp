// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>

#include "doubles/Crossing.h"
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <functional>
#include <semaphore>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace nearcast {
namespace {

using doubles::Crosser;
using doubles::LockHolder;

/// Whether a call is refused because it would have to wait.
bool isRefused(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
        return true;
    }
    return false;
}

/// What a synchronous sink may call, and what it may not.
class SinkCalls : public testing::Test, protected doubles::ManagerBench {
protected:
    ~SinkCalls() override {
        LogWriter::sharedInstance().stop();
        manager.stopScan();
    }

    /// Calls `inside` in the sink, at the first record of that type and operation.
    void trace(QXLogType type, std::string_view method, std::function<void()> inside) {
        LogWriter::Options options;
        options.synchronous = true;
        options.sink = [type, method, once = std::move(inside)](const LogRecord& record) mutable {
            if (record.logType != type || record.methodName != method) return;
            if (const auto call = std::exchange(once, nullptr)) call();
        };
        LogWriter::sharedInstance().start(std::move(options));
    }
    /// At the entry of `getRSSI`, where nothing is held.
    void traceEntry(std::function<void()> inside) {
        trace(QXLogTypePavixAPIStart, "-[QXNearcastManager getRSSI:]", std::move(inside));
    }
};

TEST_F(SinkCalls, WorkWhereEveryLockIsFree) {
    bool scans = false;
    std::size_t devices = 0;
    traceEntry([&] {
        scans = manager.startScan();
        addPrinter("P", dongle);
        devices = manager.getSettings()->size();
    });
    manager.getRSSI(dongle);
    EXPECT_TRUE(scans);
    EXPECT_EQ(devices, 1U);
}

TEST_F(SinkCalls, AreRefusedALockThatAnotherThreadHoldsWhileItWaitsForTheSink) {
    bool refused = false;
    LockHolder holder("_lockMutableSettingsFlag");
    traceEntry([&] {
        holder.letGoOn();  // to its next record, which waits for this sink
        refused = isRefused([&] { manager.getSettings(); });
    });
    Crosser other([&] { manager.getSettings(); });
    holder.awaitTaken();
    Crosser asking([&] { manager.getRSSI(dongle); });
    asking.join();
    other.join();
    EXPECT_TRUE(refused);
    EXPECT_NO_THROW(manager.getSettings()) << "the lock was not lost";
}

TEST_F(SinkCalls, AreRefusedALockThatTheirOwnThreadHolds) {
    bool refused = false;
    trace(QXLogTypeInternalMethodEnd, "-[QXNearcastManager getSettings]",
          [&] { refused = isRefused([&] { manager.getSettings(); }); });
    manager.getSettings();
    EXPECT_TRUE(refused);
}

TEST_F(SinkCalls, AreRefusedACalibrationAndLeaveNothingOfIt) {
    bool refused = false;
    traceEntry([&] { refused = isRefused([&] { manager.calibrateActionArea(dongle); }); });
    manager.getRSSI(dongle);
    EXPECT_TRUE(refused);
    EXPECT_EQ(platform.sleeps, 0);
    EXPECT_TRUE(manager.startScan()) << "none runs";
}

TEST_F(SinkCalls, AreRefusedAStartThatWouldWaitForTheRadiosState) {
    bool refused = false;
    radio().setState(0);
    traceEntry([&] { refused = isRefused([&] { manager.startScan(); }); });
    manager.getRSSI(dongle);
    EXPECT_TRUE(refused);
    EXPECT_EQ(platform.sleeps, 0);
}

}  // namespace
}  // namespace nearcast
