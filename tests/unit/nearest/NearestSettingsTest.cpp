// SPDX-License-Identifier: Apache-2.0
#include <nearcast/NearestSettings.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace nearcast {

namespace {

bool accepted(const NearestSetting& setting, double value) {
    NearestSettings settings;
    settings.*setting.value = value;
    try {
        settings.validate();
        return true;
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find(setting.name), std::string::npos) << error.what();
        return false;
    }
}

TEST(NearestSettingsTest, AcceptsTheDefaults) { EXPECT_NO_THROW(NearestSettings().validate()); }

TEST(NearestSettingsTest, AcceptsTheEndsOfEachRangeAndNothingBeyond) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const NearestSetting& setting : nearestSettings()) {
        SCOPED_TRACE(setting.name);
        EXPECT_EQ(accepted(setting, setting.least), setting.leastIncluded);
        EXPECT_TRUE(accepted(setting, std::nextafter(setting.least, infinity)));
        EXPECT_FALSE(accepted(setting, std::nextafter(setting.least, -infinity)));
        EXPECT_TRUE(accepted(setting, setting.most));
        EXPECT_FALSE(accepted(setting, std::nextafter(setting.most, infinity)));
    }
}

TEST(NearestSettingsTest, RefusesWhatIsNotANumber) {
    for (const NearestSetting& setting : nearestSettings()) {
        EXPECT_FALSE(accepted(setting, std::numeric_limits<double>::quiet_NaN())) << setting.name;
    }
}

TEST(NearestSettingsTest, SaysWhatASettingIsAndMayBe) {
    NearestSettings settings;
    settings.dwell = 61;
    try {
        settings.validate();
        FAIL() << "was accepted";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "dwell is 61, and has to be from 0 to 60 s");
    }
}

TEST(NearestSettingsTest, ListsEverySettingOnce) {
    NearestSettings settings;
    for (const NearestSetting& setting : nearestSettings()) settings.*setting.value = -1000;
    // The list names each member: none has kept its default.
    const NearestSettings none{-1000, -1000, -1000, -1000, -1000, -1000, -1000,
                               -1000, -1000, -1000, -1000, -1000, -1000};
    EXPECT_EQ(settings, none);
}

}  // namespace

}  // namespace nearcast
