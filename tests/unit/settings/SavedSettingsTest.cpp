// SPDX-License-Identifier: Apache-2.0
#include "settings/SavedSettings.h"

#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace nearcast {
namespace {

// What the manager's own tests of saving and loading (PersistenceTest) show is not shown again here.

const JSONSerialization serialization;

SettingRecordPointer share(SettingRecord record) { return std::make_shared<const SettingRecord>(std::move(record)); }

std::string refusalOf(const char* text) {
    try {
        loadedSettings(text, serialization);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "loaded";
}

TEST(SavedSettings, WritesDeviceTypesAsWordsAndReadsThemBack) {
    const Settings settings{{"BT:Bar", share({{"Device Type", 1}})}, {"BT:Till", share({{"Device Type", 3}})}};
    const std::string text = savedSettings(settings, serialization).value();
    EXPECT_NE(text.find("\"Device Type\": \"Printer\""), std::string::npos) << text;
    EXPECT_NE(text.find("\"Device Type\": \"TF-Tillfox\""), std::string::npos) << text;
    const Settings loaded = loadedSettings(text, serialization).value();
    ASSERT_EQ(loaded.size(), 2U);
    EXPECT_EQ(*loaded.at("BT:Bar"), *settings.at("BT:Bar"));
    EXPECT_EQ(*loaded.at("BT:Till"), *settings.at("BT:Till"));
}

TEST(SavedSettings, ARecordThatIsNullIsSavedAsAnEmptyOne) {
    const Settings loaded =
        loadedSettings(savedSettings({{"P", nullptr}}, serialization).value(), serialization).value();
    EXPECT_EQ(*loaded.at("P"), SettingRecord());
}

TEST(SavedSettings, WhatJSONCannotExpressIsNotSaved) {
    const Settings settings{{"P", share({{"half of nothing", std::numeric_limits<double>::quiet_NaN()}})}};
    EXPECT_EQ(savedSettings(settings, serialization), std::nullopt);
}

TEST(SavedSettings, TextThatIsNotJSONHoldsNoRegistry) {
    EXPECT_EQ(loadedSettings("{", serialization), std::nullopt);
    EXPECT_EQ(loadedSettings("", serialization), std::nullopt);
}

TEST(SavedSettings, JSONOfAnotherShapeIsRefusedInWords) {
    EXPECT_EQ(refusalOf("[]"), "settings: the whole is not an object");
    EXPECT_EQ(refusalOf(R"({"BT:Bar": 7})"), "settings: the record of \"BT:Bar\" is not an object");
    EXPECT_EQ(refusalOf(R"({"BT:Bar": {"Device Type": 1}})"), "settings: \"Device Type\" of \"BT:Bar\" is not a text");
}

}  // namespace
}  // namespace nearcast
