// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

class AddressHelpers : public testing::Test, protected doubles::ManagerBench {
protected:
    void setRecords(const std::vector<std::pair<std::string, SettingRecord>>& records) {
        Settings settings;
        for (const auto& [portName, record] : records) {
            settings.emplace(portName, std::make_shared<const SettingRecord>(record));
        }
        manager.setSettings(settings);
    }
};

TEST_F(AddressHelpers, EveryAddressIsValidTheAbsentAndTheMalformedToo) {
    EXPECT_TRUE(manager.isValidateMACAddr({}));
    EXPECT_TRUE(manager.isValidateMACAddr(""));
    EXPECT_TRUE(manager.isValidateMACAddr("hello"));
    EXPECT_TRUE(manager.isValidateMACAddr("02:1A:2B:3C:4D:5E"));
}

TEST_F(AddressHelpers, AnEmptyRegistryHasNoPortForAnyAddress) {
    EXPECT_FALSE(manager.getPortNameFromMACAddr("02:1A:2B:3C:4D:5E"));
    EXPECT_FALSE(manager.getPortNameFromMACAddr({}));
}

TEST_F(AddressHelpers, AnAddressMatchesLetterByLetter) {
    addPrinter("A", "02:1A:2B:3C:4D:5E");
    EXPECT_EQ(manager.getPortNameFromMACAddr("02:1A:2B:3C:4D:5E"), "A");
    for (const char* other : {"02:1a:2b:3c:4d:5e", "02:1A:2B:3C:4D:5", "02:1A:2B:3C:4D:5E ", "", "021A2B3C4D5E"}) {
        EXPECT_FALSE(manager.getPortNameFromMACAddr(other)) << other;
    }
    EXPECT_FALSE(manager.getPortNameFromMACAddr({}));
}

TEST_F(AddressHelpers, ARecordWithoutAnAddressOrWithOneThatIsNoTextNeverMatches) {
    setRecords({{"none", {}}, {"number", {{"MAC Address", 7}}}, {"null", {{"MAC Address", nullptr}}}});
    EXPECT_FALSE(manager.getPortNameFromMACAddr({}));
    EXPECT_FALSE(manager.getPortNameFromMACAddr("7"));
    EXPECT_FALSE(manager.getPortNameFromMACAddr(""));
}

TEST_F(AddressHelpers, OneOfTwoRecordsWithOneAddressIsFound) {
    setRecords({{"A", {{"MAC Address", "Z"}}}, {"B", {{"MAC Address", "Z"}}}, {"C", {{"MAC Address", "Y"}}}});
    const auto found = manager.getPortNameFromMACAddr("Z");
    EXPECT_TRUE(found == "A" || found == "B");
}

TEST_F(AddressHelpers, TheLookUpHoldsTheRegistryLockAlone) {
    addPrinter("A", dongle);
    journal.watchLocks();
    manager.getPortNameFromMACAddr(dongle);
    manager.getPortNameFromMACAddr("nobody");
    const Lines once{"take _lockMutableSettingsFlag", "release _lockMutableSettingsFlag"};
    EXPECT_EQ(journal.lines(), (Lines{once[0], once[1], once[0], once[1]}));
}

struct NameCase {
    std::optional<std::string_view> name;
    std::string_view address;
};

TEST_F(AddressHelpers, AnAddressIsCutOutOfAName) {
    const NameCase cases[] = {
        {"QX021A2B3C4D5E", "02:1A:2B:3C:4D:5E"},
        {"QX021a2b3c4d5eXYZ", "02:1a:2b:3c:4d:5e"},
        {"QX021A2", "QX021A2"},              // too short: as it is
        {"QX021A2B3C4D5", "QX021A2B3C4D5"},  // 13 characters
        {"xxno digits..", "xxno digits.."},  // neither marker nor digits are looked at
        {"xxno digits...", "no: d:ig:it:s.:.."},
        {"", ""},
        {std::nullopt, "(null):(null):(null):(null):(null):(null)"},
    };
    for (const auto& [name, address] : cases) EXPECT_EQ(manager.getMACAddressFromName(name), address);
}

TEST_F(AddressHelpers, CharactersAreCountedNotOctetsAndNeverSplit) {
    const NameCase cases[] = {
        {"été à Nîmes, 20h", "é :à :Nî:me:s,: 2"},
        {"ÄÖ👍👎👍👎👍👎👍👎👍👎👍👎", "👍👎:👍👎:👍👎:👍👎:👍👎:👍👎"},
        {"ÄÖ👍👎👍👎👍👎👍👎👍👎👍", "ÄÖ👍👎👍👎👍👎👍👎👍👎👍"},  // 13 characters in 48 octets
        {"QX\xFF\xFE\x80\xC3(\xE2\x82\xF0\x9F\x92!\x80", "\xFF\xFE:\x80\xC3:(\xE2:\x82\xF0:\x9F\x92:!\x80"},
    };
    for (const auto& [name, address] : cases) EXPECT_EQ(manager.getMACAddressFromName(name), address);
}

TEST_F(AddressHelpers, ANameThatIsTooShortIsAnErrorInTheTraceAndTheResult) {
    journal.watchTraces();
    manager.getMACAddressFromName("QX021A2");
    const auto lines = journal.lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "trace 2 getMACAddressFromName:: QX021A2");
    EXPECT_TRUE(lines[1].starts_with("trace 7 getMACAddressFromName:: "));
    EXPECT_EQ(lines[2], "trace 3 getMACAddressFromName:: QX021A2, -> QX021A2");
}

TEST_F(AddressHelpers, TheHelpersForAddressesAndNamesTakeNoLock) {
    journal.watchLocks();
    manager.isValidateMACAddr("x");
    manager.getMACAddressFromName("QX021A2B3C4D5E");
    EXPECT_EQ(journal.lines(), Lines{});
}

}  // namespace
}  // namespace nearcast
