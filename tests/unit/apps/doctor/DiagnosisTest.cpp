// SPDX-License-Identifier: Apache-2.0
#include "doctor/Diagnosis.h"
#include "doctor/ScanFindings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

DongleHearing goodDongle() {
    DongleHearing dongle;
    dongle.address = "02:4E:43:00:00:01";
    dongle.reports = dongle.services = dongle.payloads = dongle.signals = 98;
    dongle.names = 49;
    dongle.meanRSSI = -61.25;
    dongle.longestGap = 0.3;
    return dongle;
}

class DiagnosisTest : public testing::Test {
protected:
    DiagnosisTest() {
        hearing_.seconds = 10;
        hearing_.reports = 100;
        hearing_.foreign = 2;
        hearing_.dongles = {goodDongle()};
        health_.state = CBManagerStatePoweredOn;
    }
    DongleHearing& dongle() { return hearing_.dongles.at(0); }

    [[nodiscard]] Diagnosis diagnosis() const {
        Diagnosis result{"bluez", {}, hearing_, health_};
        for (const Finding& one : scanFindings(hearing_, health_)) result.findings.push_back({"scan", one});
        return result;
    }
    /// Whether there is a finding of this level with this text.
    [[nodiscard]] bool finds(Level level, const std::string& text) const {
        const auto findings = scanFindings(hearing_, health_);
        return std::any_of(findings.begin(), findings.end(), [&](const Finding& one) {
            return one.level == level && one.text.find(text) != std::string::npos;
        });
    }

    Hearing hearing_;
    RadioHealth health_;
};

TEST_F(DiagnosisTest, AScanThatHearsItsDonglesIsWell) {
    EXPECT_EQ(diagnosis().verdict(), Verdict::well);
    EXPECT_TRUE(finds(Level::good, "100 reports, 10.0 a second: 98 of 1 dongle, 2 of others"));
}

TEST_F(DiagnosisTest, ARadioThatIsNotOnIsNoScan) {
    health_.state = CBManagerStateUnauthorized;
    health_.why = "the bus policy forbids it";
    EXPECT_EQ(diagnosis().verdict(), Verdict::noScan);
    EXPECT_TRUE(finds(Level::fault, "unauthorized (the bus policy forbids it)"));
}

TEST_F(DiagnosisTest, ARadioThatHearsNothingIsNoScan) {
    hearing_ = Hearing();
    hearing_.seconds = 10;
    EXPECT_EQ(diagnosis().verdict(), Verdict::noScan);
    EXPECT_TRUE(finds(Level::fault, "nothing at all was heard in 10.0 s"));
}

TEST_F(DiagnosisTest, ARadioThatHearsNothingAndKnowsWhySaysSo) {
    hearing_ = Hearing();
    hearing_.seconds = 10;
    health_.why = "the scan is dead";
    EXPECT_TRUE(finds(Level::fault, "nothing at all was heard in 10.0 s: the scan is dead"));
}

TEST_F(DiagnosisTest, ARadioThatCannotBeOpenedIsNoScan) {
    Diagnosis closed = diagnosis();
    closed.hearing.reset();
    EXPECT_EQ(closed.verdict(), Verdict::noScan);
}

TEST_F(DiagnosisTest, ARadioThatHearsNoDongleWorksWithARemark) {
    hearing_.dongles.clear();
    EXPECT_EQ(diagnosis().verdict(), Verdict::remarks);
    EXPECT_TRUE(finds(Level::remark, "no dongle was heard"));
}

TEST_F(DiagnosisTest, ADongleIsRemarkedUponWhenItWasNotHeardForAsLongAsSilenceTakes) {
    dongle().longestGap = 4.999;
    EXPECT_EQ(diagnosis().verdict(), Verdict::well);
    dongle().longestGap = 5;
    EXPECT_EQ(diagnosis().verdict(), Verdict::remarks);
    EXPECT_TRUE(finds(Level::remark, "was not heard for 5.0 s"));
}

TEST_F(DiagnosisTest, ADongleThatNeverSaidItsAddressIsRemarkedUpon) {
    dongle().payloads = 0;
    EXPECT_EQ(diagnosis().verdict(), Verdict::well);  // its name says it
    dongle().names = 0;
    EXPECT_TRUE(finds(Level::remark, "never said its address"));
}

TEST_F(DiagnosisTest, WhatNeverCarriedTheServiceIsNotedAndNoMoreIsSaidOfIt) {
    dongle().services = 0;
    dongle().longestGap = 9;
    EXPECT_TRUE(finds(Level::note, "never carried the dongle service"));
    EXPECT_FALSE(finds(Level::remark, "was not heard"));
}

TEST_F(DiagnosisTest, AControllerThatGivesNoSignalIsRemarkedUpon) {
    dongle().signals = 0;
    EXPECT_TRUE(finds(Level::remark, "without a reading of its signal"));
}

TEST_F(DiagnosisTest, RestartsAreRemarkedUpon) {
    health_.restarts = 1;
    EXPECT_TRUE(finds(Level::remark, "begun again 1 time"));
}

TEST_F(DiagnosisTest, ForgeriesAreRemarkedUponAlsoWhereNothingIsHeard) {
    EXPECT_FALSE(finds(Level::remark, "in bluetoothd's name"));
    health_.forged = 2;
    EXPECT_TRUE(finds(Level::remark, "2 messages in bluetoothd's name came from another program"));
    hearing_ = {};
    EXPECT_TRUE(finds(Level::remark, "2 messages in bluetoothd's name came from another program"));
}

TEST_F(DiagnosisTest, RepeatedReportsThatComeThroughAreWell) {
    hearing_.repeats = true;
    EXPECT_EQ(duplicatesFinding(hearing_).value().level, Level::good);
}

TEST_F(DiagnosisTest, RepeatedReportsThatDoNotComeInFiveSecondsAreRemarkedUpon) {
    hearing_.senders = 1;
    hearing_.seconds = 4.9;
    EXPECT_FALSE(duplicatesFinding(hearing_));
    hearing_.seconds = 5;
    const Finding found = duplicatesFinding(hearing_).value();
    EXPECT_EQ(found.level, Level::remark);
    EXPECT_NE(found.advice.find("bluetoothd with -E"), std::string::npos);
}

TEST_F(DiagnosisTest, NothingIsSaidOfRepeatedReportsWithoutADongleOrASender) {
    EXPECT_FALSE(duplicatesFinding(hearing_));
    hearing_.senders = 3;
    hearing_.dongles.clear();
    EXPECT_FALSE(duplicatesFinding(hearing_));
}

TEST_F(DiagnosisTest, FaultsThatDoNotKeepTheScanFromWorkingAreRemarks) {
    Diagnosis one = diagnosis();
    one.findings.push_back({"rfkill", {Level::note, "", ""}});
    EXPECT_EQ(one.verdict(), Verdict::well);
    one.findings.push_back({"rfkill", {Level::fault, "", ""}});
    EXPECT_EQ(one.verdict(), Verdict::remarks);
}

TEST_F(DiagnosisTest, RemarksAndTheWantOfAScanAreFoundWanting) {
    EXPECT_EQ(statusOf(Verdict::well), exitGood);
    EXPECT_EQ(statusOf(Verdict::remarks), exitWanting);
    EXPECT_EQ(statusOf(Verdict::noScan), exitWanting);
    health_.restarts = 1;
    const auto said = nlohmann::json::parse(diagnosisAsJSON(diagnosis()));
    EXPECT_EQ(said["status"], 3);
    EXPECT_EQ(said["verdict"], "remarks");
}

TEST_F(DiagnosisTest, FindingsStandInColumnsWithTheirAdviceBelow) {
    EXPECT_EQ(findingInColumns({"rfkill", {Level::fault, "hci0 is blocked", "rfkill unblock bluetooth"}}),
              "rfkill        FAULT   hci0 is blocked\n"
              "                      -> rfkill unblock bluetooth\n");
    EXPECT_EQ(findingInColumns({"kernel", {Level::good, "Linux\x1b", ""}}),
              "kernel        ok      Linux\xEF\xBF\xBD\n");
}

TEST_F(DiagnosisTest, DonglesStandInColumns) {
    EXPECT_EQ(hearingInColumns(hearing_),
              "DONGLE                  REPORTS  PER S  SERVICE  PAYLOAD  NAME    SIGNAL     GAP\n"
              "02:4E:43:00:00:01            98    9.8     100%     100%    50%   -61 dBm   0.3 s\n");
    EXPECT_EQ(hearingInColumns(Hearing()), "");
}

TEST_F(DiagnosisTest, JSONSaysAll) {
    const auto said = nlohmann::json::parse(diagnosisAsJSON(diagnosis()));
    EXPECT_EQ(said["radio"], "bluez");
    EXPECT_EQ(said["status"], 0);
    EXPECT_EQ(said["verdict"], "well");
    EXPECT_EQ(said["findings"][0]["level"], "good");
    EXPECT_EQ(said["scan"]["reports"], 100);
    EXPECT_EQ(said["scan"]["dongles"][0]["MACAddr"], "02:4E:43:00:00:01");
    EXPECT_EQ(said["scan"]["dongles"][0]["reportsPerSecond"], 9.8);
    EXPECT_EQ(said["scan"]["dongles"][0]["RSSI"], -61.25);
}

TEST_F(DiagnosisTest, JSONOfARadioThatCannotBeOpenedHasNoScan) {
    const auto said = nlohmann::json::parse(diagnosisAsJSON({"hci:0", {}, std::nullopt, {}}));
    EXPECT_EQ(said["status"], 3);
    EXPECT_EQ(said["verdict"], "noScan");
    EXPECT_TRUE(said["scan"].is_null());
}

}  // namespace
}  // namespace nearcast::cli
