// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// A scan with windows of one runs, and what a delegate does when it is called can be chosen.
class Delegate : public testing::Test, protected doubles::ManagerBench {
protected:
    Delegate() { manager.startScan(1); }
    ~Delegate() override {
        platform.onSleep = nullptr;
        LogWriter::sharedInstance().stop();
        manager.stopScan();
    }
    Delegate(const Delegate&) = delete;
    Delegate& operator=(const Delegate&) = delete;

    /// Sets a delegate that does this in each of its operations, once.
    void onceInDiscovery(std::function<void()> action) {
        auto delegate = listener();
        const auto write = delegate->didDiscoverPort;
        delegate->didDiscoverPort = [write, action = std::move(action), done = std::make_shared<bool>(false)](
                                        auto portName, auto type, auto address, auto RSSI) {
            write(portName, type, address, RSSI);
            if (!std::exchange(*done, true)) action();
        };
        manager.setDelegate(delegate);
    }
    void onceInSilence(std::function<void()> action) {
        auto delegate = listener();
        const auto write = delegate->didUpdateState;
        delegate->didUpdateState = [write, action = std::move(action), done = std::make_shared<bool>(false)](
                                       auto portName, auto address) {
            write(portName, address);
            if (!std::exchange(*done, true)) action();
        };
        manager.setDelegate(delegate);
    }
    /// Does this once, when the port of an address has been looked up: from the record that tells of it.
    void onceAfterALookUp(std::function<void()> action) {
        LogWriter::Options options;
        options.synchronous = true;
        options.sink = [action = std::move(action), done = std::make_shared<bool>(false)](const LogRecord& record) {
            if (record.methodName != "-[QXNearcastManager getPortNameFromMACAddr:]" || record.logType != 3) return;
            if (!std::exchange(*done, true)) action();
        };
        LogWriter::sharedInstance().start(std::move(options));
    }
    std::shared_ptr<QXNearcastManagerDelegate> nextDelegate() {
        auto next = std::make_shared<QXNearcastManagerDelegate>();
        next->didDiscoverPort = [&](auto...) { journal.add("the next delegate hears of a dongle"); };
        next->didUpdateState = [&](auto...) { journal.add("the next delegate hears of silence"); };
        return next;
    }
    void expectDeadlockRefused(const std::function<void()>& call) {
        try {
            call();
            ADD_FAILURE() << "it did not throw";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
        }
    }
};

TEST_F(Delegate, MayCallEveryOperationWhileItHearsOfADongle) {
    std::int32_t RSSI = 0;
    onceInDiscovery([&] {
        RSSI = manager.getRSSI(dongle);
        addPrinter("A", dongle);
        EXPECT_EQ(manager.getSettings()->size(), 1U);
        const auto data = manager.serializedSettings();
        manager.removeSettingWithPortName("A");
        EXPECT_TRUE(manager.deserializeSettings(data.value()));
        manager.setSettings(*manager.getSettings());
        EXPECT_FALSE(manager.startScan(2));
        manager.stopScan();
        EXPECT_EQ(manager.calibrateActionArea(secondDongle), 127);
        EXPECT_TRUE(manager.startScan(1));
        EXPECT_EQ(manager.samplingNumber(), 1U);
        EXPECT_NE(manager.delegate(), nullptr);
    });
    hearTimes(2, dongle, -60);
    EXPECT_EQ(RSSI, -60);
    hear(dongle, -61);
    EXPECT_EQ(reports().back(), "discover A 1 00:11:22:AA:BB:CC -61");
}

TEST_F(Delegate, MayCallWhatLeavesTheTableAloneWhileItHearsOfSilence) {
    onceInSilence([&] {
        addPrinter("A", secondDongle);
        EXPECT_EQ(manager.getSettings()->size(), 1U);
        const auto data = manager.serializedSettings();
        manager.removeSettingWithPortName("A");
        EXPECT_TRUE(manager.deserializeSettings(data.value()));
        manager.setSettings({});
        EXPECT_FALSE(manager.startScan());
        manager.stopScan();
        EXPECT_TRUE(manager.startScan());
    });
    hear(dongle, -60);
    pass(5s);
    EXPECT_EQ(reports(), Lines{"silent  00:11:22:AA:BB:CC"});
    EXPECT_EQ(journal.lines("console"), Lines{"console A duplicate execution reuest with 'startScan' or "
                                              "'calibrateActionArea' was found."});
    EXPECT_EQ(manager.getRSSI(dongle), 127);
}

TEST_F(Delegate, ThatAsksForASignalWhileItHearsOfSilenceGetsAnErrorInsteadOfHanging) {
    onceInSilence([&] { expectDeadlockRefused([&] { manager.getRSSI(dongle); }); });
    hear(dongle, -60);
    pass(5s);
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_EQ(manager.getRSSI(dongle), 127) << "the entry went, and the lock is free";
}

TEST_F(Delegate, ThatLetsThatErrorOutIsToldOfTheDongleAgain) {
    onceInSilence([&] { manager.getRSSI(dongle); });
    hear(dongle, -60);
    pass(5s);
    EXPECT_EQ(console().size(), 1U);
    EXPECT_EQ(manager.getRSSI(dongle), 0) << "the entry stayed";
    pass(5s);
    EXPECT_EQ(reports(), Lines(2, "silent  00:11:22:AA:BB:CC"));
}

TEST_F(Delegate, MayEvenCalibrateWhileItHearsOfSilence) {
    onceInSilence([&] {
        manager.stopScan();
        platform.onSleep = [&] { hear(dongle, -60); };
        EXPECT_EQ(manager.calibrateActionArea(secondDongle), 127) << "the calibration's own lock is another";
        platform.onSleep = nullptr;
    });
    hear(dongle, -60);
    pass(5s);
    EXPECT_EQ(console(), Lines{});
    EXPECT_EQ(manager.getRSSI(dongle), 127);
}

TEST_F(Delegate, ThatThrowsAtADiscoveryIsPutOnTheConsoleAndHearsTheNextOne) {
    onceInDiscovery([] { throw std::runtime_error("out of paper"); });
    hearTimes(3, dongle, -60);
    EXPECT_EQ(reports(), Lines(2, "discover  0 00:11:22:AA:BB:CC -60"));
    ASSERT_EQ(console().size(), 1U);
    EXPECT_NE(console()[0].find("out of paper"), std::string::npos);
    EXPECT_EQ(manager.getRSSI(dongle), -60);
}

TEST_F(Delegate, ThatThrowsWhatIsNoExceptionIsPutOnTheConsoleToo) {
    onceInDiscovery([] { throw 7; });
    hearTimes(2, dongle, -60);
    EXPECT_EQ(console().size(), 1U);
}

TEST_F(Delegate, ThatThrowsAtSilenceReleasesTheTableAndLeavesItWhole) {
    onceInSilence([] { throw std::runtime_error("out of paper"); });
    hear(dongle, -60);
    hear(secondDongle, -60);
    journal.watchTraces();
    pass(5s);
    EXPECT_EQ(journal.lines("trace 3 eventRepeatTimer"), Lines{}) << "an error leaves no exit record";
    EXPECT_EQ(console().size(), 1U);
    EXPECT_EQ(manager.getRSSI(dongle), 0);
    EXPECT_EQ(manager.getRSSI(secondDongle), 0);
    pass(5s);
    EXPECT_EQ(reports().size(), 3U) << "both are told by the next sweep, the first one again";
    EXPECT_EQ(manager.getRSSI(dongle), 127);
    EXPECT_EQ(manager.getRSSI(secondDongle), 127);
}

TEST_F(Delegate, ThatGivesWayAtADiscoveryIsKeptAliveUntilItReturns) {
    std::weak_ptr<QXNearcastManagerDelegate> watched;
    bool alive = false;
    onceInDiscovery([&] {
        manager.setDelegate(nullptr);
        alive = !watched.expired();
    });
    watched = manager.delegate();
    hearTimes(2, dongle, -60);
    EXPECT_TRUE(alive);
    EXPECT_TRUE(watched.expired());
    hear(dongle, -60);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(Delegate, ThatGivesWayAtSilenceLeavesTheRestOfTheSweepToTheNextOne) {
    onceInSilence([&] {
        auto next = std::make_shared<QXNearcastManagerDelegate>();
        next->didUpdateState = [&](auto /*portName*/, auto /*address*/) { journal.add("told the next delegate"); };
        manager.setDelegate(next);
    });
    hear(dongle, -60);
    hear(secondDongle, -60);
    pass(5s);
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_EQ(journal.count("told the next delegate"), 1U);
}

TEST_F(Delegate, ThatGoesAtSilenceEndsTheSweepAtTheNextStaleEntry) {
    onceInSilence([&] { manager.setDelegate(nullptr); });
    hear(dongle, -60);
    hear(secondDongle, -60);
    journal.watchTraces();
    pass(5s);
    EXPECT_EQ(reports().size(), 1U);
    EXPECT_EQ(journal.lines("trace 3 eventRepeatTimer"), Lines{});
    const int first = manager.getRSSI(dongle);
    const int second = manager.getRSSI(secondDongle);
    EXPECT_EQ(first + second, 127) << "one is gone, the other is not";
}

TEST_F(Delegate, HearsOfADongleWithNoLockHeld) {
    journal.watchLocks();
    auto delegate = listener();
    std::size_t taken = 0;
    delegate->didDiscoverPort = [&](auto...) {
        taken = journal.lines("take").size();
        EXPECT_EQ(taken, journal.lines("release").size());
    };
    manager.setDelegate(delegate);
    addPrinter("A", dongle);
    hearTimes(2, dongle, -60);
    EXPECT_GT(taken, 0U);
}

TEST_F(Delegate, HearsOfSilenceWithTheTablesLockHeldAlone) {
    journal.watchLocks();
    auto delegate = listener();
    Lines before;
    delegate->didUpdateState = [&](auto...) { before = journal.lines(); };
    manager.setDelegate(delegate);
    addPrinter("A", dongle);
    hear(dongle, -60);
    journal.clear();
    pass(5s);
    const std::string take = "take _lockMutableSettingsFlag";
    const std::string release = "release _lockMutableSettingsFlag";
    EXPECT_EQ(before, (Lines{"take _lockRssiDataFlag", take, release, take, release}));
}

TEST_F(Delegate, MayStopTheScanFromTheSweepThatCallsIt) {
    onceInSilence([&] { manager.stopScan(); });
    hear(dongle, -60);
    hear(secondDongle, -60);
    pass(5s);
    EXPECT_EQ(reports().size(), 2U) << "the sweep under way ends in its own time";
    journal.clear();
    pass(600s);
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST_F(Delegate, HearsTheTypeThatARecordHasByNowNotTheOneThatWasFoundWithThePort) {
    manager.setDelegate(listener());
    addPrinter("A", dongle);
    hear(dongle, -60);
    onceAfterALookUp([&] {
        manager.removeSettingWithPortName("A");
        manager.addSettingForTFTillfoxPortName("A", {}, secondDongle, {}, {});
    });
    hear(dongle, -60);
    EXPECT_EQ(reports(), Lines{"discover A 3 00:11:22:AA:BB:CC -60"});
}

TEST_F(Delegate, HearsOfAPortWithoutATypeWhoseRecordIsGoneByNow) {
    manager.setDelegate(listener());
    addPrinter("A", dongle);
    hear(dongle, -60);
    onceAfterALookUp([&] { manager.setSettings({}); });
    hear(dongle, -60);
    EXPECT_EQ(reports(), Lines{"discover A 0 00:11:22:AA:BB:CC -60"});
}

TEST_F(Delegate, ThatIsSetWhileThePortIsLookedUpHearsOfTheDongleInPlaceOfTheLastOne) {
    manager.setDelegate(listener());
    hear(dongle, -60);
    onceAfterALookUp([&] { manager.setDelegate(nextDelegate()); });
    hear(dongle, -60);
    EXPECT_EQ(journal.count("the next delegate hears of a dongle"), 1U);
    EXPECT_EQ(reports(), Lines{});
}

TEST_F(Delegate, ThatGoesWhileThePortIsLookedUpHearsNothingMore) {
    manager.setDelegate(listener());
    hear(dongle, -60);
    onceAfterALookUp([&] { manager.setDelegate(nullptr); });
    hear(dongle, -60);
    EXPECT_EQ(reports(), Lines{});
}

TEST_F(Delegate, ThatIsSetWhileTheSweepLooksAPortUpHearsOfTheSilenceInPlaceOfTheLastOne) {
    manager.setDelegate(listener());
    hear(dongle, -60);
    onceAfterALookUp([&] { manager.setDelegate(nextDelegate()); });
    pass(5s);
    EXPECT_EQ(journal.count("the next delegate hears of silence"), 1U);
    EXPECT_EQ(reports(), Lines{});
    EXPECT_EQ(manager.getRSSI(dongle), 127) << "it was told of, and is gone";
}

TEST_F(Delegate, ThatTakesTheScanLockAgainFromARestartGetsAnError) {
    manager.stopScan();
    LogWriter::Options options;
    options.synchronous = true;
    options.sink = [&](const LogRecord& record) {
        if (record.methodName != "-[QXNearcastManager restartScan:]" || record.logType != 2) return;
        expectDeadlockRefused([&] { manager.stopScan(); });
    };
    LogWriter::sharedInstance().start(std::move(options));
    EXPECT_TRUE(manager.startScan()) << "the first restart runs under the lock of the start";
    LogWriter::sharedInstance().stop();
}

}  // namespace
}  // namespace nearcast
