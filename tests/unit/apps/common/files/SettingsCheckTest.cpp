// SPDX-License-Identifier: Apache-2.0
#include "common/files/SettingsCheck.h"
#include "common/files/SettingsFile.h"
#include "doctor/SettingsFindings.h"
#include "doubles/TemporaryFolder.h"
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

std::vector<std::string> findingsIn(const std::string& text) {
    const auto parsed = JSONSerialization::parse(text);
    std::vector<std::string> said;
    for (const SettingsFinding& one : checkSettings(std::get<SettingValue>(parsed))) said.push_back(one.inFile("f"));
    return said;
}

/// A device "P" with a good address and this member.
std::vector<std::string> findingsOf(const std::string& member) {
    return findingsIn(R"({"P": {"MAC Address": "00:11:22:AA:BB:CC", )" + member + "}}");
}

std::vector<std::string> findingsOfAddress(const std::string& address) {
    return findingsIn(R"({"P": {"MAC Address": ")" + address + R"("}})");
}

TEST(SettingsCheck, FindsNothingInWhatTheManagerSaves) {
    EXPECT_EQ(findingsIn(R"json({"BT:Drawer": {"Device Type": "TF-Tillfox", "MAC Address": "00:11:22:AA:BB:DD",
                                               "Nick Name": "(null)", "With Drawer": true, "Port Settings": "x"},
                                 "BT:Front": {"Device Type": "Printer", "MAC Address": "00:11:22:AA:BB:CC",
                                              "Nick Name": "x", "Threshold RSSI": -65, "With Drawer": false}})json"),
              std::vector<std::string>());
    EXPECT_EQ(findingsIn("{}"), std::vector<std::string>());
    EXPECT_EQ(findingsOf(R"("Other": {"MAC Address": 7})"), std::vector<std::string>());
}

TEST(SettingsCheck, FindsAnAddressThatIsSpeltOtherwiseThanOneThatIsHeard) {
    const char* const others[] = {"00:11:22:aa:bb:cc",    "00-11-22-AA-BB-CC", "001122AABBCC",
                                  "00:11:22:AA:BB",       "00:11:22:AA:BB:CG", "00:11:22:AA:BB:C",
                                  "00:11:22:AA:BB:CC:DD", " 0:11:22:AA:BB:CC", ""};
    for (const std::string address : others) {
        const auto said = findingsOfAddress(address);
        ASSERT_EQ(said.size(), 1U) << address;
        EXPECT_EQ(
            said[0].find("f: \"P\": MAC Address \"" + address + "\" matches only a dongle heard by this very spelling"),
            0U)
            << said[0];
    }
    EXPECT_TRUE(findingsOfAddress("FF:FF:FF:FF:FF:FF").empty());
    EXPECT_TRUE(findingsOfAddress("00:00:00:00:00:00").empty());
}

TEST(SettingsCheck, FindsTwoDevicesWithOneAddress) {
    EXPECT_EQ(findingsIn(R"({"A": {"MAC Address": "00:11:22:AA:BB:CC"}, "B": {"MAC Address": "00:11:22:AA:BB:CD"},
                             "C": {"MAC Address": "00:11:22:AA:BB:CC"}, "D": {"MAC Address": "00:11:22:AA:BB:CC"}})"),
              (std::vector<std::string>{"f: \"C\": MAC Address \"00:11:22:AA:BB:CC\" is that of \"A\" too",
                                        "f: \"D\": MAC Address \"00:11:22:AA:BB:CC\" is that of \"A\" too"}));
}

TEST(SettingsCheck, FindsARecordWithoutAnAddress) {
    const std::vector<std::string> missing{"f: \"P\": MAC Address is missing: no dongle stands for the device"};
    EXPECT_EQ(findingsIn(R"({"P": {}})"), missing);
    EXPECT_EQ(findingsIn(R"({"P": {"mac address": "00:11:22:AA:BB:CC"}})"), missing);
    for (const std::string value : {"null", "7", "true", "[]", "{}"}) {
        EXPECT_EQ(findingsIn(R"({"P": {"MAC Address": )" + value + "}}"),
                  (std::vector<std::string>{"f: \"P\": MAC Address is no text: no dongle stands for the device"}));
    }
}

TEST(SettingsCheck, FindsAThresholdThatNoSignalHas) {
    for (const std::string good : {"-127", "20", "-126.5", "19.999", "0", "-127.0", "2e1"}) {
        EXPECT_TRUE(findingsOf("\"Threshold RSSI\": " + good).empty()) << good;
    }
    for (const std::string far : {"-128", "21", "-127.001", "20.001", "1e300", "9223372036854775808"}) {
        EXPECT_EQ(findingsOf("\"Threshold RSSI\": " + far),
                  (std::vector<std::string>{"f: \"P\": Threshold RSSI is outside -127 to 20 dBm, which signals have"}))
            << far;
    }
    for (const std::string none : {"\"-65\"", "null", "true", "[-65]", "{}"}) {
        EXPECT_EQ(findingsOf("\"Threshold RSSI\": " + none),
                  (std::vector<std::string>{"f: \"P\": Threshold RSSI is no number"}))
            << none;
    }
}

TEST(SettingsCheck, FindsADeviceTypeThatIsUnknown) {
    EXPECT_TRUE(findingsOf(R"("Device Type": "Printer")").empty());
    EXPECT_TRUE(findingsOf(R"("Device Type": "TF-Tillfox")").empty());
    for (const std::string other : {"printer", "Printer ", "", "Scanner"}) {
        EXPECT_EQ(findingsOf("\"Device Type\": \"" + other + "\""),
                  (std::vector<std::string>{"f: \"P\": Device Type \"" + other +
                                            "\" is unknown, and passed over; known: \"Printer\", \"TF-Tillfox\""}));
    }
}

TEST(SettingsCheck, FindsAllThatIsOddAboutOneDevice) {
    EXPECT_EQ(findingsIn(R"({"P": {"Device Type": "X", "Threshold RSSI": 99, "MAC Address": "x"}})").size(), 3U);
}

TEST(SettingsCheck, ShortensWhatIsVeryLong) {
    const auto said = findingsOfAddress(std::string(100'000, 'x'));
    ASSERT_EQ(said.size(), 1U);
    EXPECT_LT(said[0].size(), 400U);
}

class SettingsWarnings : public testing::Test {
protected:
    /// So many devices, none of them with an address.
    std::string fileOf(int devices) {
        std::string text = "{";
        for (int number = 0; number < devices; ++number) {
            text.append(number == 0 ? "" : ", ").append("\"P" + std::to_string(100 + number) + "\": {}");
        }
        return folder_.write("s.json", text + "}");
    }
    static std::string warningsOf(const std::string& path) {
        testing::internal::CaptureStderr();
        registryOfFile(path, "watch");
        return testing::internal::GetCapturedStderr();
    }

    const TemporaryFolder folder_;
};

TEST_F(SettingsWarnings, AreSaidOnceEachByTheCommandThatReads) {
    const std::string path = fileOf(2);
    const std::string said = warningsOf(path);
    EXPECT_EQ(said.find("nearcast watch: " + path + ": \"P100\": MAC Address is missing"), 0U) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2);
}

TEST_F(SettingsWarnings, AreTwentyAtMostAndTheNumberOfTheRest) {
    const std::string twenty = warningsOf(fileOf(20));
    EXPECT_EQ(std::count(twenty.begin(), twenty.end(), '\n'), 20);
    EXPECT_EQ(twenty.find("more"), std::string::npos) << twenty;
    const std::string path = fileOf(23);
    const std::string said = warningsOf(path);
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 21);
    EXPECT_TRUE(said.ends_with("nearcast watch: " + path + ": and 3 findings more\n")) << said;
}

TEST_F(SettingsWarnings, LeaveTheRegistryAsItIs) {
    const std::string text = R"({"P": {"Device Type": "X", "Threshold RSSI": "far", "MAC Address": "x"}})";
    testing::internal::CaptureStderr();
    const auto registry = registryOfFile(folder_.write("s.json", text), "watch");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(*registry->at("P"), (SettingRecord{{"Threshold RSSI", "far"}, {"MAC Address", "x"}}));
}

TEST_F(SettingsWarnings, DoNotSteerTheTerminal) {
    const std::string said =
        warningsOf(folder_.write("s.json", R"({"\u001b[2J": {"MAC Address": "\u001b]0;x\u0007"}})"));
    EXPECT_EQ(said.find('\x1b'), std::string::npos) << said;
    EXPECT_EQ(said.find('\x07'), std::string::npos) << said;
}

TEST_F(SettingsWarnings, AreRemarksOfTheDoctor) {
    const auto findings = settingsFindings(fileOf(23));
    ASSERT_EQ(findings.size(), 21U);
    EXPECT_EQ(findings[0].level, Level::remark);
    EXPECT_NE(findings[0].text.find("\"P100\": MAC Address is missing"), std::string::npos);
    EXPECT_NE(findings[20].text.find("and 3 findings more"), std::string::npos);
}

TEST_F(SettingsWarnings, AreNoneOfAFileThatIsGoodWhichTheDoctorSays) {
    const std::string path = folder_.write("s.json", R"({"P": {"MAC Address": "00:11:22:AA:BB:CC"}})");
    EXPECT_EQ(warningsOf(path), "");
    const auto findings = settingsFindings(path);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].level, Level::good);
    EXPECT_EQ(findings[0].text, path + ": 1 device");
}

}  // namespace
}  // namespace nearcast::cli
