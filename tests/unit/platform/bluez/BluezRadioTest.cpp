// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezRadio.h"

#include "doubles/BluezBench.h"
#include "doubles/KeptLines.h"

#include <gtest/gtest.h>

#include <chrono>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;

class CountingDelegate : public CBCentralManagerDelegate {
public:
    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& /*central*/, const CBPeripheral& /*peripheral*/,
                                             const AdvertisementData& /*data*/, std::int32_t /*RSSI*/) override {
        ++reports;
    }
    int reports = 0;
};

/// A radio in a time of its own, with one dongle that advertises ten times a second.
class BluezRadioTest : public testing::Test {
protected:
    BluezRadioTest() { bluez.place({}); }

    /// @param due whether the radio is to do what is due as well
    void pass(Time duration, bool due) {
        for (const Time end = now_ + duration; now_ < end; now_ += 10ms) {
            radio.pass(now_, due);
            bluez.runUntil(now_);
        }
    }

    KeptLines console;
    CountingDelegate delegate;
    RadioMonitor monitor{console, [this] { return NSDate(now_); }};
    FakeBluez bluez;
    FakeRfkill rfkill;
    FakeMgmt mgmt{bluez};
    BluezRadio radio{delegate, console, monitor, bluez, rfkill, mgmt, "", [] {}};

private:
    Time now_{0};
};

TEST_F(BluezRadioTest, DoesWhatIsDueOnlyWhereItIsToldThatSomethingIs) {
    radio.scanForPeripheralsWithServices(std::nullopt, ScanOptions{});
    pass(1s, false);
    EXPECT_EQ(bluez.connections(), 0);
    pass(1s, true);
    EXPECT_EQ(bluez.connections(), 1);
    EXPECT_GT(delegate.reports, 0);
}

TEST_F(BluezRadioTest, KnowsTheTimeOfReportsThatComeWhileNothingIsDue) {
    radio.scanForPeripheralsWithServices(std::nullopt, ScanOptions{});
    pass(1s, true);
    pass(40s, false);
    pass(10ms, true);
    EXPECT_EQ(monitor.health().why, "") << "it heard the dongle all the time";
    EXPECT_EQ(bluez.count("StopDiscovery"), 0);
}

}  // namespace

}  // namespace nearcast::bluez
