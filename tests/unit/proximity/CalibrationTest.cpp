// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

const std::string method = "calibrateActionArea:: ";
const std::string duplicate =
    "console A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.";

class Calibration : public testing::Test, protected doubles::ManagerBench {
protected:
    Calibration() { listen(); }
    ~Calibration() override { manager.stopScan(); }
    Calibration(const Calibration&) = delete;
    Calibration& operator=(const Calibration&) = delete;

    /// In the first sleep the dongle is heard so often.
    void hearInFirstSleep(int times, std::int32_t RSSI) {
        platform.onSleep = [this, times, RSSI] {
            if (platform.sleeps == 1) hearTimes(times, dongle, RSSI);
        };
    }
};

TEST_F(Calibration, GivesTheSecondStrongestOfSamples5To15) {
    const std::vector<std::int32_t> readings{-20, -20, -20, -20, -60, -55, -70, -55,
                                             -58, -65, -66, -67, -68, -69, -71, -10};
    platform.onSleep = [&] {
        for (const std::int32_t RSSI : readings) hear(dongle, RSSI);
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), -55);
}

TEST_F(Calibration, EndsAtTheSecondLookWhereTheSamplesComeInTheFirstHalfSecond) {
    hearInFirstSleep(15, -60);
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
    EXPECT_EQ(platform.date().sinceStart(), 500ms);
}

TEST_F(Calibration, OfASilentDongleGives127AfterFourteenSleepsWithTheRadioStopped) {
    journal.watchTraces();
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(platform.sleeps, 14);
    EXPECT_EQ(platform.date().sinceStart(), 7s);
    EXPECT_EQ(journal.lines("central"), (Lines{"central scan all", "central stop"}));
    EXPECT_EQ(journal.lines("trace 1 calibrate"), Lines{}) << "too few samples leave no exit record";
    EXPECT_EQ(console(), Lines{});
    EXPECT_TRUE(manager.startScan());
}

TEST_F(Calibration, WithFourteenSamplesGives127AndWithFifteenDoesNot) {
    hearInFirstSleep(14, -60);
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    platform.sleeps = 0;
    hearInFirstSleep(15, -60);
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
}

TEST_F(Calibration, CountsTheSamplesOfTheLastSleepWithoutAnotherLook) {
    platform.onSleep = [&] {
        if (platform.sleeps == 14) hearTimes(15, dongle, -60);
    };
    journal.watchLocks();
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
    EXPECT_EQ(platform.sleeps, 14);
    EXPECT_EQ(journal.count("take _lockCalibrateActionAreaFlag"), 14U + 15U + 1U);
}

TEST_F(Calibration, SamplesTheOneDongleAloneAndReportsNobody) {
    manager.startScan(1);
    hear(secondDongle, -60);
    manager.stopScan();
    platform.onSleep = [&] { hearTimes(20, secondDongle, -60); };
    journal.clear();
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(reports(), Lines{});
    EXPECT_EQ(manager.getRSSI(secondDongle), 0) << "the table was left alone";
}

TEST_F(Calibration, DropsReadingsOf127) {
    hearInFirstSleep(15, 127);
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
}

TEST_F(Calibration, HearsDonglesThatDoNotCarryTheService) {
    platform.onSleep = [&] {
        AdvertisingReport report;
        report.manufacturerData = payloadOf(dongle);
        report.RSSI = -60;
        for (int times = 0; times < 15; ++times) radio().advertise(report);
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
}

TEST_F(Calibration, NeedsNeitherARegistrationNorARadioThatIsOn) {
    radio().setState(4);
    hearInFirstSleep(15, -60);
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
}

TEST_F(Calibration, AsksForNoTimers) {
    hearInFirstSleep(15, -60);
    manager.calibrateActionArea(dongle);
    journal.clear();
    pass(600s);
    EXPECT_EQ(journal.lines(), Lines{});
}

TEST_F(Calibration, IsRefusedWhileAScanRunsAndLeavesItAlone) {
    manager.startScan(1);
    journal.clear();
    journal.watchTraces();
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(journal.lines("central"), Lines{});
    EXPECT_EQ(console(), Lines{duplicate});
    EXPECT_EQ(journal.lines("trace 7 "), Lines{"trace 7 " + method + "scanStart == YES, 1"});
    EXPECT_EQ(journal.lines("trace 1 "), Lines{"trace 1 " + method + "00:11:22:AA:BB:CC, -> 127"});
    hearTimes(2, dongle, -60);
    EXPECT_EQ(reports().size(), 1U);
}

TEST_F(Calibration, IsRefusedWhileAnotherRuns) {
    std::int32_t inner = 0;
    platform.onSleep = [&] {
        if (platform.sleeps == 1) inner = manager.calibrateActionArea(secondDongle);
    };
    manager.calibrateActionArea(dongle);
    EXPECT_EQ(inner, 127);
    EXPECT_EQ(console(), Lines{duplicate});
}

TEST_F(Calibration, OfAnAddressThatIsNotAcceptedIsRefused) {
    manager.acceptsAddresses = false;
    journal.watchTraces();
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(console(), Lines{"console UUID is invalid."});
    EXPECT_EQ(journal.lines("trace 7 "),
              Lines{"trace 7 " + method + "[self isValidateMACAddr:MACAddr] == NO, <ptr>, 00:11:22:AA:BB:CC"});
    EXPECT_EQ(journal.lines("trace 1 "), Lines{"trace 1 " + method + "00:11:22:AA:BB:CC, -> 127"});
    EXPECT_EQ(platform.sleeps, 0);
}

TEST_F(Calibration, OfAnAbsentAddressHearsNobody) {
    platform.onSleep = [&] { hearTimes(5, dongle, -60); };
    journal.watchTraces();
    EXPECT_EQ(manager.calibrateActionArea({}), 127);
    EXPECT_NE(journal
                  .lines("trace 6 centralManager:didDiscoverPeripheral:advertisementData:RSSI:: [dongleMACAddress "
                         "isEqualToString:macAddrForActionArea] == NO, 00:11:22:AA:BB:CC, (null)")
                  .size(),
              0U);
}

TEST_F(Calibration, KeepsTheAddressAsItWasWhenItBegan) {
    std::string address(dongle);
    platform.onSleep = [&] {
        address.assign(address.size(), 'x');  // the caller's text is the caller's
        hearTimes(15, dongle, -60);
    };
    journal.watchTraces();
    EXPECT_EQ(manager.calibrateActionArea(address), -60);
}

TEST_F(Calibration, HoldsNoLockWhileItSleeps) {
    journal.watchLocks();
    std::size_t taken = 0;
    platform.onSleep = [&] {
        taken = journal.lines("take").size();
        EXPECT_EQ(taken, journal.lines("release").size());
    };
    manager.calibrateActionArea(dongle);
    EXPECT_GT(taken, 0U);
}

TEST_F(Calibration, ThatWasStoppedWithAllSamplesStillGivesThem) {
    platform.onSleep = [&] {
        hearTimes(15, dongle, -60);
        manager.stopScan();
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
}

// Two whose ends overlap: the first was stopped, and the second begins while the first still waits.
TEST_F(Calibration, WhoseSamplesWereCutShortDoesNotAnswerWithAnothers) {
    std::int32_t second = 0;
    platform.onSleep = [&] {
        if (platform.sleeps == 2) hearTimes(15, secondDongle, -40);
        if (platform.sleeps != 1) return;
        hearTimes(14, dongle, -60);
        manager.stopScan();
        second = manager.calibrateActionArea(secondDongle);
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_EQ(second, -40);
    EXPECT_EQ(platform.sleeps, 2) << "it need not wait any more once the other has enough";
}

TEST_F(Calibration, WhoseSamplesAreCompleteStillGivesThemWhenAnotherWasArmedMeanwhile) {
    std::int32_t second = 0;
    platform.onSleep = [&] {
        if (platform.sleeps != 1) return;
        hearTimes(15, dongle, -60);
        manager.stopScan();
        second = manager.calibrateActionArea(secondDongle);
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
    EXPECT_EQ(second, 127);
    EXPECT_EQ(platform.sleeps, 14 + 14) << "the flag that there is enough is the other's now";
}

TEST_F(Calibration, ThatBeginsInsideAnotherOfTheSameDongleEvaluatesItsOwnSamples) {
    std::int32_t second = 0;
    platform.onSleep = [&] {
        if (platform.sleeps == 2) hearTimes(15, dongle, -40);
        if (platform.sleeps != 1) return;
        hearTimes(15, dongle, -60);
        manager.stopScan();
        second = manager.calibrateActionArea(dongle);
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), -60);
    EXPECT_EQ(second, -40);
}

TEST_F(Calibration, IsArmedUnderTheScansLockAndLooksUnderItsOwn) {
    hearInFirstSleep(15, -60);
    journal.watchLocks();
    manager.calibrateActionArea(dongle);
    const Lines look{"take _lockCalibrateActionAreaFlag", "release _lockCalibrateActionAreaFlag"};
    Lines expected{"take _lockStartScanFlag", "central scan all", "release _lockStartScanFlag"};
    for (int times = 0; times < 1 + 15 + 1; ++times) expected.insert(expected.end(), look.begin(), look.end());
    expected.insert(expected.end(), {"take _lockStartScanFlag", "central stop", "release _lockStartScanFlag"});
    expected.insert(expected.end(), look.begin(), look.end());
    EXPECT_EQ(journal.lines(), expected) << "a look, fifteen samples, a look, the stop, the last look";
}

TEST_F(Calibration, TracesItsResult) {
    hearInFirstSleep(15, -60);
    journal.watchTraces();
    manager.calibrateActionArea(dongle);
    EXPECT_EQ(journal.lines("trace 0 " + method), Lines{"trace 0 " + method + "00:11:22:AA:BB:CC"});
    EXPECT_EQ(journal.lines("trace 1 " + method), Lines{"trace 1 " + method + "00:11:22:AA:BB:CC, -> -60"});
}

TEST_F(Calibration, TracesEachSampleAndThatTheFifteenthIsEnough) {
    hearInFirstSleep(16, -60);
    journal.watchTraces();
    manager.calibrateActionArea(dongle);
    const std::string handler = "trace 6 centralManager:didDiscoverPeripheral:advertisementData:RSSI:: ";
    EXPECT_EQ(journal.count(handler + "toCalibrateActionArea == YES, 1"), 16U);
    EXPECT_EQ(journal.count(handler + "isEnoughDataForActionArea == NO, 0"), 15U);
    EXPECT_EQ(journal.lines(handler + "rssiDataForActionArea.count"),
              Lines{handler + "rssiDataForActionArea.count >= 15, 15"});
}

TEST_F(Calibration, TracesADongleThatIsNotTheOne) {
    platform.onSleep = [&] { hear(secondDongle, platform.sleeps == 1 ? -60 : 127); };
    journal.watchTraces();
    manager.calibrateActionArea(dongle);
    const std::string handler = "trace 6 centralManager:didDiscoverPeripheral:advertisementData:RSSI:: ";
    EXPECT_EQ(journal.lines(handler + "[dongle"),
              Lines{handler + "[dongleMACAddress isEqualToString:macAddrForActionArea] == NO, 00:11:22:AA:BB:DD, "
                              "00:11:22:AA:BB:CC"});
}

TEST_F(Calibration, NeedsADelegateForItsSamples) {
    manager.setDelegate(nullptr);
    hearInFirstSleep(15, -60);
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
}

TEST_F(Calibration, HearsTheDongleUnderTheExactTextAlone) {
    platform.onSleep = [&] { hearTimes(15, dongle, -60); };
    EXPECT_EQ(manager.calibrateActionArea("00:11:22:aa:bb:cc"), 127);
    EXPECT_EQ(manager.calibrateActionArea(""), 127);
}

TEST_F(Calibration, StopsAScanThatWasStartedAfterItWasStopped) {
    platform.onSleep = [&] {
        if (platform.sleeps != 1) return;
        manager.stopScan();
        EXPECT_TRUE(manager.startScan());
    };
    EXPECT_EQ(manager.calibrateActionArea(dongle), 127);
    EXPECT_FALSE(radio().scanning()) << "its end stops whatever runs then";
    journal.clear();
    pass(600s);
    EXPECT_EQ(journal.lines(), Lines{});
}

}  // namespace
}  // namespace nearcast
