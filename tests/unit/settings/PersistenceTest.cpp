// SPDX-License-Identifier: Apache-2.0
#include "doubles/ManagerBench.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;

class Persistence : public testing::Test, protected doubles::ManagerBench {
protected:
    static SettingRecordPointer share(SettingRecord record) {
        return std::make_shared<const SettingRecord>(std::move(record));
    }
    void setRecord(SettingRecord record) { manager.setSettings(Settings{{"P", share(std::move(record))}}); }
    /// What is left of a record after a save and a load.
    SettingRecord savedAndLoaded(SettingRecord record) {
        setRecord(std::move(record));
        const auto data = manager.serializedSettings();
        manager.setSettings({});
        EXPECT_TRUE(manager.deserializeSettings(data.value()));
        return *manager.getSettings()->at("P");
    }
};

TEST_F(Persistence, AnEmptyRegistryIsAnEmptyObjectAndLoadsBack) {
    EXPECT_EQ(manager.serializedSettings(), "{}");
    addPrinter("A", dongle);
    EXPECT_TRUE(manager.deserializeSettings("{}"));
    EXPECT_TRUE(manager.getSettings()->empty());
}

TEST_F(Persistence, ARegisteredPrinterAndDrawerSurviveASaveAndALoad) {
    manager.addSettingForPrinterPortName("BT:Front", "mini", true, dongle, -65, "Theke");
    manager.addSettingForTFTillfoxPortName("Küche", {}, secondDongle, {}, {});
    const Settings before = *manager.getSettings();
    const auto data = manager.serializedSettings().value();
    EXPECT_NE(data.find("\"Device Type\": \"Printer\""), std::string::npos);
    EXPECT_NE(data.find("\"Device Type\": \"TF-Tillfox\""), std::string::npos);
    manager.setSettings({});
    EXPECT_TRUE(manager.deserializeSettings(data));
    const Settings after = *manager.getSettings();
    ASSERT_EQ(after.size(), 2U);
    for (const auto& [portName, record] : before) EXPECT_EQ(*after.at(portName), *record) << portName;
}

TEST_F(Persistence, TheBlobIsIndented) {
    addPrinter("A", dongle);
    EXPECT_NE(manager.serializedSettings()->find("\n    \""), std::string::npos);
}

TEST_F(Persistence, ADeviceTypeWithoutAWordIsLostByASave) {
    for (const SettingValue& type :
         {SettingValue(0), SettingValue(2), SettingValue(4), SettingValue(-1), SettingValue("Printer"),
          SettingValue("1"), SettingValue(nullptr), SettingValue(false), SettingValue(1.5)}) {
        EXPECT_EQ(savedAndLoaded({{"Device Type", type}, {"Nick Name", "n"}}), (SettingRecord{{"Nick Name", "n"}}));
    }
}

TEST_F(Persistence, ANumberThatEqualsATypeIsThatType) {
    EXPECT_EQ(savedAndLoaded({{"Device Type", 1.0}}), (SettingRecord{{"Device Type", 1}}));
    EXPECT_EQ(savedAndLoaded({{"Device Type", 3.0}}), (SettingRecord{{"Device Type", 3}}));
    EXPECT_EQ(savedAndLoaded({{"Device Type", true}}), (SettingRecord{{"Device Type", 1}}));
}

TEST_F(Persistence, AWordIsReadLetterByLetter) {
    for (const char* word : {"printer", "PRINTER", "Printer ", "TF-tillfox", "", "1"}) {
        const std::string blob = R"({"P": {"Device Type": ")" + std::string(word) + R"(", "Nick Name": "n"}})";
        EXPECT_TRUE(manager.deserializeSettings(blob));
        EXPECT_EQ(*manager.getSettings()->at("P"), (SettingRecord{{"Nick Name", "n"}})) << word;
    }
}

TEST_F(Persistence, KeepsUnknownKeysAndEveryKindOfValueThatJSONHas) {
    const SettingRecord record{
        {"null", nullptr},
        {"yes", true},
        {"no", false},
        {"largest", std::numeric_limits<long long>::max()},
        {"smallest", std::numeric_limits<long long>::min()},
        {"unsigned", std::numeric_limits<unsigned long long>::max()},
        {"half", 0.5},
        {"whole", 2.0},
        {"text", "a\"b\\c\n\x01é"},
        {"list", SettingValue::Array{1, "two", SettingValue::Array{}}},
        {"members", SettingValue::Dictionary{{"", SettingValue::Dictionary{}}}},
    };
    EXPECT_EQ(savedAndLoaded(record), record);
}

TEST_F(Persistence, LoadingReplacesTheWholeRegistry) {
    addPrinter("gone", dongle);
    EXPECT_TRUE(manager.deserializeSettings(R"({"new": {}})"));
    EXPECT_EQ(manager.getSettings()->size(), 1U);
    EXPECT_EQ(manager.getSettings()->count("new"), 1U);
}

TEST_F(Persistence, LoadsRecordsThatRegistrationWouldRefuse) {
    EXPECT_TRUE(manager.deserializeSettings(R"({"A": {"MAC Address": "Z"}, "B": {"MAC Address": "Z"}, "": {}})"));
    EXPECT_EQ(manager.getSettings()->size(), 3U);
}

TEST_F(Persistence, WhatIsNoJSONGivesNoAndKeepsTheRegistry) {
    addPrinter("A", dongle);
    journal.watchTraces();
    EXPECT_FALSE(manager.deserializeSettings("garbage"));
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 0 deserializeSettings:: <ptr>", "trace 7 deserializeSettings:: results == nil, <ptr>",
                     "trace 1 deserializeSettings:: <ptr>, -> 0"}));
    EXPECT_FALSE(manager.deserializeSettings(""));
    EXPECT_FALSE(manager.deserializeSettings({}));
    EXPECT_EQ(manager.getSettings()->count("A"), 1U);
}

TEST_F(Persistence, JSONOfAnotherShapeRaisesAndKeepsTheRegistry) {
    addPrinter("A", dongle);
    for (const char* blob : {"[]", "null", "7", "\"text\"", "true", R"({"P": 1})", R"({"P": null})", R"({"P": []})",
                             R"({"P": {"Device Type": 1}})", R"({"P": {"Device Type": null}})",
                             R"({"good": {"Device Type": "Printer"}, "bad": {"Device Type": ["Printer"]}})"}) {
        EXPECT_THROW(manager.deserializeSettings(blob), std::invalid_argument) << blob;
        EXPECT_EQ(manager.getSettings()->size(), 1U) << blob;
    }
    journal.watchLocks();
    EXPECT_TRUE(manager.deserializeSettings("{}")) << "no lock was left held";
}

TEST_F(Persistence, TheErrorNamesTheRecordThatIsWrong) {
    try {
        manager.deserializeSettings(R"({"BT:Front": {"Device Type": 1}})");
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("BT:Front"), std::string::npos) << error.what();
    }
}

TEST_F(Persistence, ASnapshotSharesTheRecordsAndDoesNotFollowTheRegistry) {
    addPrinter("A", dongle);
    const auto first = manager.getSettings();
    const auto second = manager.getSettings();
    EXPECT_EQ(first->at("A").get(), second->at("A").get());
    manager.removeSettingWithPortName("A");
    EXPECT_EQ(first->size(), 1U);
}

TEST_F(Persistence, TheRegistrySharesTheRecordsThatItIsGiven) {
    const auto record = share({{"Nick Name", "n"}});
    manager.setSettings(Settings{{"P", record}});
    EXPECT_EQ(manager.getSettings()->at("P"), record);
}

TEST_F(Persistence, SettingNoneEmptiesTheRegistry) {
    addPrinter("A", dongle);
    manager.setSettings({});
    ASSERT_NE(manager.getSettings(), nullptr);
    EXPECT_TRUE(manager.getSettings()->empty());
}

TEST_F(Persistence, ARecordThatIsMissingIsAnEmptyRecord) {
    manager.setSettings(Settings{{"P", nullptr}});
    EXPECT_TRUE(manager.getSettings()->at("P")->empty());
    EXPECT_EQ(manager.serializedSettings(), "{\n  \"P\": {}\n}");
}

TEST_F(Persistence, TheSettersAndGettersLocksStandWhereTheyBelong) {
    journal.watchLocks();
    journal.watchTraces();
    manager.getSettings();
    manager.setSettings({});
    const std::string take = "take _lockMutableSettingsFlag";
    const std::string release = "release _lockMutableSettingsFlag";
    EXPECT_EQ(journal.lines(), (Lines{"trace 2 getSettings: ", take, "trace 3 getSettings: <ptr>", release,
                                      "trace 2 setSettings:: <ptr>", take, release, "trace 3 setSettings:: "}));
}

struct Unwritable {
    const char* name;
    SettingValue value;
    const char* description;  ///< a part of the console line
};

const Unwritable unwritable[] = {
    {"bytes", SettingValue::Bytes{std::byte{0xDE}, std::byte{0xAD}}, "<dead>"},
    {"not a number", std::nan(""), "nan"},
    {"infinity", std::numeric_limits<double>::infinity(), "inf"},
    {"minus infinity", -std::numeric_limits<double>::infinity(), "-inf"},
    {"text that is not UTF-8", "\xFF", "\xEF\xBF\xBD"},
    {"half a surrogate pair", "\xED\xA0\x80", "\xEF\xBF\xBD"},
    {"bytes in a list", SettingValue::Array{1, SettingValue::Bytes{std::byte{1}}}, "<01>"},
    {"a key that is not UTF-8", SettingValue::Dictionary{{"\xFF", 1}}, "\xEF\xBF\xBD"},
};

TEST_F(Persistence, ARegistryThatJSONCannotExpressIsNotSavedAndSaysSo) {
    for (const Unwritable& each : unwritable) {
        setRecord({{"Nick Name", each.value}});
        journal.clear();
        EXPECT_EQ(manager.serializedSettings(), std::nullopt) << each.name;
        const auto lines = console();
        ASSERT_EQ(lines.size(), 1U) << each.name;
        EXPECT_TRUE(lines[0].ends_with(" is not JSONSerializable")) << lines[0];
        EXPECT_NE(lines[0].find(each.description), std::string::npos) << lines[0];
        EXPECT_EQ(manager.getSettings()->at("P")->at("Nick Name").storage().index(), each.value.storage().index());
    }
}

TEST_F(Persistence, AKeyOrAPortNameThatIsNotUTF8CannotBeSaved) {
    setRecord({{"\xC0\xAF", 1}});
    EXPECT_EQ(manager.serializedSettings(), std::nullopt);
    manager.setSettings(Settings{{"\xFF", share({})}});
    EXPECT_EQ(manager.serializedSettings(), std::nullopt);
}

TEST_F(Persistence, AnUnwritableRegistryIsTracedWithTheLockHeldAndReleased) {
    setRecord({{"Nick Name", SettingValue::Bytes{}}});
    journal.clear();
    journal.watchLocks();
    journal.watchTraces();
    manager.serializedSettings();
    EXPECT_EQ(journal.lines(),
              (Lines{"trace 0 serializedSettings: ", "take _lockMutableSettingsFlag",
                     "trace 6 serializedSettings: [NSJSONSerialization isValidJSONObject:copiedSettings] == NO, <ptr>",
                     R"(console {"P":{"Nick Name":"<>"}} is not JSONSerializable)", "release _lockMutableSettingsFlag",
                     "trace 1 serializedSettings: -> <ptr>"}));
}

TEST_F(Persistence, ADeviceTypeThatCannotBeWrittenIsLostAndDoesNoHarm) {
    EXPECT_EQ(savedAndLoaded({{"Device Type", SettingValue::Bytes{}}}), SettingRecord{});
}

TEST_F(Persistence, ASaveHoldsTheRegistrysLockAndTracesItsResult) {
    journal.watchLocks();
    journal.watchTraces();
    manager.serializedSettings();
    EXPECT_EQ(journal.lines(), (Lines{"trace 0 serializedSettings: ", "take _lockMutableSettingsFlag",
                                      "release _lockMutableSettingsFlag", "trace 1 serializedSettings: -> <ptr>"}));
}

TEST_F(Persistence, ALoadTakesTheRegistrysLockOnlyToInstallWhatItRead) {
    journal.watchLocks();
    journal.watchTraces();
    manager.deserializeSettings(R"({"A": {"Device Type": "Printer"}})");
    EXPECT_EQ(journal.lines(), (Lines{"trace 0 deserializeSettings:: <ptr>", "trace 2 setSettings:: <ptr>",
                                      "take _lockMutableSettingsFlag", "release _lockMutableSettingsFlag",
                                      "trace 3 setSettings:: ", "trace 1 deserializeSettings:: <ptr>, -> 1"}));
}

TEST_F(Persistence, ALoadOfAnotherShapeTracesItsEntryAlone) {
    journal.watchLocks();
    journal.watchTraces();
    EXPECT_THROW(manager.deserializeSettings("[]"), std::invalid_argument);
    EXPECT_EQ(journal.lines(), Lines{"trace 0 deserializeSettings:: <ptr>"});
}

/// A manager whose registry cannot be copied.
class UncopyableManager : public Manager {
public:
    using Manager::Manager;

protected:
    std::shared_ptr<const Settings> snapshot() override NEARCAST_NO_THREAD_SAFETY_ANALYSIS { throw std::bad_alloc(); }
};

TEST_F(Persistence, ASnapshotThatFailsPassesOnAndReleasesTheRegistry) {
    UncopyableManager uncopyable(this, platform);
    journal.watchLocks();
    EXPECT_THROW((void)uncopyable.getSettings(), std::bad_alloc);
    const Lines once{"take _lockMutableSettingsFlag", "release _lockMutableSettingsFlag"};
    EXPECT_EQ(journal.lines(), once);
    EXPECT_NO_THROW(uncopyable.removeSettingWithPortName("A"));
}

/// JSON whose writer finds no memory.
class FailingJSON : public JSONSerialization {
public:
    [[nodiscard]] std::string dataWithJSONObject(const SettingValue& /*value*/) const override {
        throw std::bad_alloc();
    }
};

TEST_F(Persistence, ASaveWhoseWritingFailsPassesOnAndReleasesTheRegistry) {
    const FailingJSON failing;
    VirtualPlatform poor(journal, failing);
    Manager saver(this, poor);
    EXPECT_THROW((void)saver.serializedSettings(), std::bad_alloc);
    EXPECT_NO_THROW(saver.setSettings({}));
}

}  // namespace
}  // namespace nearcast
