// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class PresenceSweep : public testing::Test, protected doubles::ManagerBench {
protected:
    PresenceSweep() {
        listen();
        manager.startScan(1);
        manager.stopScan();  // the tests sweep by hand
    }
    void hearAt(std::chrono::milliseconds at, std::string_view address) {
        pass(at - std::chrono::duration_cast<std::chrono::milliseconds>(platform.date().sinceStart()));
        radio().scanForPeripheralsWithServices(std::nullopt, {.allowDuplicates = true});
        hear(address, -60);
        radio().stopScan();
    }
    void sweepAt(std::chrono::milliseconds at) {
        pass(at - std::chrono::duration_cast<std::chrono::milliseconds>(platform.date().sinceStart()));
        manager.eventRepeatTimer();
    }
};

TEST_F(PresenceSweep, OfAnEmptyTableTakesAndReleasesItsLockAndDoesNothingElse) {
    journal.clear();
    journal.watchLocks();
    journal.watchTraces();
    manager.eventRepeatTimer();
    EXPECT_EQ(journal.lines(), (Lines{"trace 2 eventRepeatTimer: ", "take _lockRssiDataFlag",
                                      "release _lockRssiDataFlag", "trace 3 eventRepeatTimer: "}));
}

TEST_F(PresenceSweep, AnEntryOf4Point9SecondsStaysAndOneOf5IsToldAndRemoved) {
    hearAt(100ms, dongle);
    sweepAt(5000ms);
    EXPECT_EQ(reports(), Lines{});
    EXPECT_EQ(manager.getRSSI(dongle), 0);
    sweepAt(5100ms);
    EXPECT_EQ(reports(), Lines{"silent  00:11:22:AA:BB:CC"});
    EXPECT_EQ(manager.getRSSI(dongle), 127);
    sweepAt(10100ms);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(PresenceSweep, OneMicrosecondBeforeFiveSecondsAnEntryIsStillFresh) {
    hearAt(0ms, dongle);
    pass(4'999'999us);
    manager.eventRepeatTimer();
    EXPECT_EQ(reports(), Lines{});
    pass(1us);
    manager.eventRepeatTimer();
    EXPECT_EQ(reports(), Lines{"silent  00:11:22:AA:BB:CC"});
}

TEST_F(PresenceSweep, ARefreshPutsSilenceOff) {
    hearAt(0ms, dongle);
    hearAt(4900ms, dongle);
    sweepAt(5000ms);
    sweepAt(9800ms);
    EXPECT_EQ(journal.lines("silent"), Lines{});
    sweepAt(9900ms);
    EXPECT_EQ(journal.lines("silent").size(), 1U);
}

TEST_F(PresenceSweep, ARefreshWithoutAnOutputCountsToo) {
    manager.startScan(5);
    manager.stopScan();
    hearAt(0ms, dongle);
    hearAt(3000ms, dongle);
    sweepAt(5000ms);
    EXPECT_EQ(reports(), Lines{});
}

TEST_F(PresenceSweep, AllStaleEntriesAreToldOnceEachInOneSweepAndFreshOnesStay) {
    addPrinter("A", dongle);
    hearAt(0ms, dongle);
    hearAt(10ms, secondDongle);
    hearAt(20ms, thirdDongle);
    hearAt(1000ms, "00:00:00:00:00:01");
    sweepAt(5500ms);
    auto told = reports();
    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, (Lines{"silent  00:11:22:AA:BB:DD", "silent  00:11:22:AA:BB:EE", "silent A 00:11:22:AA:BB:CC"}));
    EXPECT_EQ(manager.getRSSI("00:00:00:00:00:01"), 0);
}

TEST_F(PresenceSweep, LooksARegisteredPortUpTwiceAndAnUnregisteredOnce) {
    addPrinter("A", dongle);
    hearAt(0ms, dongle);
    journal.watchTraces();
    sweepAt(5000ms);
    EXPECT_EQ(journal.lines("trace 2 getPortNameFromMACAddr:").size(), 2U);
    manager.setSettings({});
    hearAt(6000ms, dongle);
    journal.clear();
    sweepAt(11000ms);
    EXPECT_EQ(journal.lines("trace 2 getPortNameFromMACAddr:").size(), 1U);
}

TEST_F(PresenceSweep, WithoutAnybodyWhoAsksNothingIsRemovedAndNoExitIsTraced) {
    auto deaf = listener();
    deaf->didUpdateState = nullptr;
    hearAt(0ms, dongle);
    hearAt(0ms, secondDongle);
    journal.watchTraces();
    for (const auto& delegate : {deaf, std::shared_ptr<QXNearcastManagerDelegate>()}) {
        manager.setDelegate(delegate);
        journal.clear();
        sweepAt(60000ms);
        EXPECT_EQ(journal.lines(), Lines{"trace 2 eventRepeatTimer: "});
        EXPECT_EQ(manager.getRSSI(dongle), 0);
        EXPECT_EQ(manager.getRSSI(secondDongle), 0);
    }
}

TEST_F(PresenceSweep, WithoutAnybodyWhoAsksAFreshTableStillTracesItsExit) {
    manager.setDelegate(nullptr);
    journal.watchTraces();
    manager.eventRepeatTimer();
    EXPECT_EQ(journal.lines("trace 3 "), Lines{"trace 3 eventRepeatTimer: "});
}

TEST_F(PresenceSweep, ADongleThatComesBackBeginsWithEmptyWindows) {
    hearAt(0ms, dongle);
    hearAt(100ms, dongle);
    EXPECT_EQ(manager.getRSSI(dongle), -60);
    sweepAt(6000ms);
    hearAt(7000ms, dongle);
    EXPECT_EQ(manager.getRSSI(dongle), 0);
}

TEST_F(PresenceSweep, TheFirstSweepOfTheNextScanFindsWhatFellSilentBetween) {
    hearAt(0ms, dongle);
    pass(60s);
    EXPECT_EQ(reports(), Lines{}) << "no scan, no sweep";
    manager.startScan();
    pass(4'999'999us);
    EXPECT_EQ(reports(), Lines{});
    pass(1us);
    EXPECT_EQ(reports(), Lines{"silent  00:11:22:AA:BB:CC"});
    manager.stopScan();
}

}  // namespace
}  // namespace nearcast
