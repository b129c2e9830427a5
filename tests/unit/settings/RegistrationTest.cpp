// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <nearcast/LogWriter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;
using Text = Manager::Text;

class RegistrationTest : public testing::Test, protected doubles::ManagerBench {
protected:
    void addDrawer(Text portName, Text address) {
        manager.addSettingForTFTillfoxPortName(portName, {}, address, {}, {});
    }
    void addPrinterText(Text portName, Text address) {
        manager.addSettingForPrinterPortName(portName, {}, false, address, {}, {});
    }
    SettingRecord record(std::string_view portName) {
        const auto settings = manager.getSettings();
        const auto found = settings->find(portName);
        return found == settings->end() ? SettingRecord{{"missing", true}} : *found->second;
    }
    template <class Call>
    std::string refusal(Call call) {
        try {
            call();
            return "";
        } catch (const PortException& exception) {
            EXPECT_EQ(exception.name(), "PortException");
            EXPECT_STREQ(exception.what(), exception.reason().c_str());
            return exception.reason();
        }
    }
};

TEST_F(RegistrationTest, APrinterGetsARecordOfExactlyFourKeysWhereNothingElseIsGiven) {
    addPrinter("BT:Front", dongle);
    EXPECT_EQ(record("BT:Front"), (SettingRecord{{"Device Type", 1},
                                                 {"With Drawer", false},
                                                 {"Nick Name", "(null)"},
                                                 {"MAC Address", std::string(dongle)}}));
}

TEST_F(RegistrationTest, APrinterGetsARecordOfSixKeysWhereAllIsGiven) {
    manager.addSettingForPrinterPortName("BT:Front", "mini", true, dongle, -65, "Till 1");
    EXPECT_EQ(record("BT:Front"), (SettingRecord{{"Device Type", 1},
                                                 {"With Drawer", true},
                                                 {"Nick Name", "Till 1"},
                                                 {"MAC Address", std::string(dongle)},
                                                 {"Port Settings", "mini"},
                                                 {"Threshold RSSI", -65}}));
}

TEST_F(RegistrationTest, ADrawerIsAlwaysWithDrawerAndOfType3) {
    addDrawer("Drawer", dongle);
    EXPECT_EQ(
        record("Drawer"),
        (SettingRecord{
            {"Device Type", 3}, {"With Drawer", true}, {"Nick Name", "(null)"}, {"MAC Address", std::string(dongle)}}));
}

TEST_F(RegistrationTest, EmptyTextsArePresentTexts) {
    manager.addSettingForPrinterPortName("", "", false, "", {}, "");
    const SettingRecord expected{
        {"Device Type", 1}, {"With Drawer", false}, {"Nick Name", ""}, {"MAC Address", ""}, {"Port Settings", ""}};
    EXPECT_EQ(record(""), expected);
}

TEST_F(RegistrationTest, AMalformedAddressIsAcceptedAndStoredAsGiven) {
    addPrinter("A", "ZZ");
    EXPECT_EQ(record("A").at("MAC Address"), SettingValue("ZZ"));
}

TEST_F(RegistrationTest, AThresholdIsCutTowardZeroAndClampedTo32Bits) {
    const std::pair<double, std::int32_t> cases[] = {
        {-65, -65},
        {-65.9, -65},
        {65.9, 65},
        {-0.5, 0},
        {0.99, 0},
        {2147483647, INT32_MAX},
        {2147483646.9, 2147483646},
        {2147483648.0, INT32_MAX},
        {-2147483648.0, INT32_MIN},
        {-2147483649.0, INT32_MIN},
        {1e300, INT32_MAX},
        {-1e300, INT32_MIN},
        {std::nan(""), 0},
        {std::numeric_limits<double>::infinity(), INT32_MAX},
        {-std::numeric_limits<double>::infinity(), INT32_MIN},
    };
    for (const auto& [given, stored] : cases) {
        manager.setSettings({});
        manager.addSettingForPrinterPortName("A", {}, false, dongle, given, {});
        EXPECT_EQ(record("A").at("Threshold RSSI"), SettingValue(stored)) << given;
    }
}

TEST_F(RegistrationTest, AnAbsentPortNameOrAddressIsRefusedInEachOperationsOwnWords) {
    const char* const printer = "portName or dongle MAC address is nil.";
    const char* const drawer = "portName or dongleMACAddr is nil.";
    EXPECT_EQ(refusal([&] { addPrinterText({}, dongle); }), printer);
    EXPECT_EQ(refusal([&] { addPrinterText("A", {}); }), printer);
    EXPECT_EQ(refusal([&] { addPrinterText({}, {}); }), printer);
    EXPECT_EQ(refusal([&] { addDrawer({}, dongle); }), drawer);
    EXPECT_EQ(refusal([&] { addDrawer("A", {}); }), drawer);
    const char* const words = "console portName or MACAddr is nil";
    const std::string point = words + std::string(".");
    EXPECT_EQ(console(), (Lines{words, words, words, point, point}));
    EXPECT_TRUE(manager.getSettings()->empty());
}

TEST_F(RegistrationTest, APortNameInUseIsRefusedAndTheFirstRecordStays) {
    addPrinter("A", dongle);
    const SettingRecord first = record("A");
    EXPECT_EQ(refusal([&] { addPrinter("A", secondDongle); }), "The specified portName is already in use.");
    EXPECT_EQ(refusal([&] { addDrawer("A", secondDongle); }), "The specified portName is already in use.");
    EXPECT_EQ(record("A"), first);
    EXPECT_EQ(console(), Lines(2, "console portName A is already exists."));
}

TEST_F(RegistrationTest, AnAddressInUseIsRefusedInEachOperationsOwnWords) {
    addPrinter("A", dongle);
    EXPECT_EQ(refusal([&] { addPrinter("B", dongle); }), "The specified dongle MAC address is already in use.");
    EXPECT_EQ(refusal([&] { addDrawer("B", dongle); }), "The specified dongleMACAddr is already in use.");
    EXPECT_EQ(console(), Lines(2, "console Given MAC address is already exist."));
    EXPECT_EQ(manager.getSettings()->size(), 1U);
}

TEST_F(RegistrationTest, TheSameAddressInOtherLettersIsAnotherDongle) {
    addPrinter("A", "00:11:22:AA:BB:CC");
    addPrinter("B", "00:11:22:aa:bb:cc");
    EXPECT_EQ(manager.getSettings()->size(), 2U);
}

TEST_F(RegistrationTest, ThePortNameIsCheckedBeforeTheAddress) {
    addPrinter("A", dongle);
    EXPECT_EQ(refusal([&] { addPrinter("A", dongle); }), "The specified portName is already in use.");
}

TEST_F(RegistrationTest, AnAddressThatIsNotAcceptedIsRefusedBeforeItIsLookedUp) {
    addPrinter("A", dongle);
    manager.acceptsAddresses = false;
    journal.watchTraces();
    EXPECT_EQ(refusal([&] { addPrinter("B", dongle); }), "dongle MAC address is invalid.");
    EXPECT_EQ(refusal([&] { addDrawer("B", dongle); }), "dongle MAC address is invalid.");
    EXPECT_EQ(console(), Lines(2, "console UUID is invalid."));
    EXPECT_EQ(journal.lines("trace 7 ").front(),
              "trace 7 addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:RSSIthreshould:nickName:: "
              "[self isValidateMACAddr:MACAddr] == NO, <ptr>, 00:11:22:AA:BB:CC");
    EXPECT_EQ(journal.lines("trace 2 getPortNameFromMACAddr:").size(), 0U);
}

TEST_F(RegistrationTest, ARefusalTracesThenTellsTheConsoleThenTracesItsExit) {
    addPrinter("A", dongle);
    journal.watchTraces();
    refusal([&] { addDrawer("A", "x"); });
    const std::string method = "addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:: ";
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 0 " + method + "A, (null), x, 0, (null)",
                     "trace 7 " + method + "[mutableSettings.allKeys containsObject:portName], <ptr>, A",
                     "console portName A is already exists.", "trace 1 " + method + "A, (null), x, 0, (null)"}));
}

TEST_F(RegistrationTest, TheDrawersThresholdRecordNamesThePortSettings) {
    journal.watchTraces();
    manager.addSettingForTFTillfoxPortName("A", "mini", dongle, -65.9, "n");
    manager.addSettingForTFTillfoxPortName("B", {}, secondDongle, -65, {});
    manager.addSettingForPrinterPortName("C", "mini", true, thirdDongle, -65.9, {});
    const std::string drawer =
        "trace 6 addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:: ";
    const std::string printer =
        "trace 6 addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:RSSIthreshould:nickName:: ";
    EXPECT_EQ(journal.lines("trace 6 add"),
              (Lines{drawer + "portSettings != nil, mini", drawer + "Threshold != nil, mini",
                     drawer + "Threshold != nil, (null)", printer + "portSettings != nil, mini",
                     printer + "Threshold != nil, -65"}));
}

// The checks and the insertion are not one step.
TEST_F(RegistrationTest, TheLaterOfTwoThatRaceForOnePortNameReplacesTheEarlier) {
    bool raced = false;
    LogWriter::Options options;
    options.synchronous = true;
    options.sink = [&](const LogRecord& record) {
        if (raced || !record.anyString.starts_with("portSettings != nil")) return;
        raced = true;  // the checks have passed, and another thread's registration comes between
        manager.addSettingForPrinterPortName("A", {}, false, secondDongle, {}, "between");
    };
    LogWriter::sharedInstance().start(std::move(options));
    manager.addSettingForPrinterPortName("A", "mini", false, dongle, {}, "later");
    LogWriter::sharedInstance().stop();
    EXPECT_TRUE(raced);
    EXPECT_EQ(manager.getSettings()->size(), 1U);
    EXPECT_EQ(record("A").at("Nick Name"), SettingValue("later"));
}

TEST_F(RegistrationTest, ThePrintersEntryAndExitListItsArgumentsWithTheDrawer) {
    journal.watchTraces();
    manager.addSettingForPrinterPortName("A", "mini", true, dongle, -65.9, "Till 1");
    manager.addSettingForPrinterPortName("B", {}, false, secondDongle, {}, {});
    const std::string method =
        "addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:RSSIthreshould:nickName:: ";
    const std::string first = method + "A, mini, 1, 00:11:22:AA:BB:CC, -65, Till 1";
    const std::string second = method + "B, (null), 0, 00:11:22:AA:BB:DD, 0, (null)";
    EXPECT_EQ(journal.lines("trace 0 "), (Lines{"trace 0 " + first, "trace 0 " + second}));
    EXPECT_EQ(journal.lines("trace 1 "), (Lines{"trace 1 " + first, "trace 1 " + second}));
}

TEST_F(RegistrationTest, TheDrawersEntryAndExitListItsArgumentsWithoutTheDrawer) {
    journal.watchTraces();
    manager.addSettingForTFTillfoxPortName("A", "mini", dongle, 1e300, "Till 1");
    const std::string text =
        "addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:: "
        "A, mini, 00:11:22:AA:BB:CC, 2147483647, Till 1";
    EXPECT_EQ(journal.lines("trace 0 "), Lines{"trace 0 " + text});
    EXPECT_EQ(journal.lines("trace 1 "), Lines{"trace 1 " + text});
}

TEST_F(RegistrationTest, AMissingArgumentIsTracedWithBothAndEndsTheChecks) {
    journal.watchLocks();
    journal.watchTraces();
    refusal([&] { addPrinterText({}, dongle); });
    const std::string method =
        "addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:RSSIthreshould:nickName:: ";
    const std::string arguments = "(null), (null), 0, 00:11:22:AA:BB:CC, 0, (null)";
    EXPECT_EQ(journal.lines(), (Lines{"trace 0 " + method + arguments,
                                      "trace 7 " + method + "(portName == nil) || (MACAddr == nil), <ptr>, <ptr>",
                                      "console portName or MACAddr is nil", "trace 1 " + method + arguments}));
}

TEST_F(RegistrationTest, AnAddressInUseIsTracedWithTheManagerAndTheAddress) {
    addPrinter("A", dongle);
    journal.watchTraces();
    refusal([&] { addDrawer("B", dongle); });
    const std::string method = "addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:: ";
    EXPECT_EQ(journal.lines("trace 7 "),
              Lines{"trace 7 " + method + "[self getPortNameFromMACAddr:MACAddr] != nil, <ptr>, 00:11:22:AA:BB:CC"});
    EXPECT_EQ(journal.lines().back(), "trace 1 " + method + "B, (null), 00:11:22:AA:BB:CC, 0, (null)");
}

TEST_F(RegistrationTest, TheRegistrysLockSpansEachLookAndTheInsertionAlone) {
    journal.watchLocks();
    journal.watchTraces();
    manager.addSettingForPrinterPortName("A", "mini", false, dongle, -65, {});
    Lines steps;
    for (const std::string& line : journal.lines()) {
        if (line.starts_with("trace 0 ") || line.starts_with("trace 3 ") || line.starts_with("trace 6 ")) {
            steps.push_back(line.substr(0, 7));
        } else if (!line.starts_with("trace")) {
            steps.push_back(line);
        }
    }
    const std::string take = "take _lockMutableSettingsFlag";
    const std::string release = "release _lockMutableSettingsFlag";
    EXPECT_EQ(steps, (Lines{"trace 0", take, release, "trace 3", take, release, "trace 3", "trace 6", "trace 6", take,
                            release}));
    EXPECT_TRUE(journal.lines().back().starts_with("trace 1 "));
}

}  // namespace
}  // namespace nearcast
