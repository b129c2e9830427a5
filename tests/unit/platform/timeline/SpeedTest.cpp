// SPDX-License-Identifier: Apache-2.0
#include "platform/timeline/TimelinePlatform.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace nearcast {

namespace {

std::optional<double> speedOf(const std::string& option) {
    return parseSpeed(RadioString::parse("replay:file" + option));
}

TEST(Speed, IsRealTimeUnlessSaidOtherwise) { EXPECT_EQ(speedOf(""), 1.0); }

TEST(Speed, IsAnyNumberAboveZero) {
    EXPECT_EQ(speedOf("?speed=8"), 8.0);
    EXPECT_EQ(speedOf("?speed=0.25"), 0.25);
    EXPECT_EQ(speedOf("?speed=1e3"), 1000.0);
}

TEST(Speed, IsAbsentForAsFastAsItGoes) { EXPECT_EQ(speedOf("?speed=max"), std::nullopt); }

TEST(Speed, RefusesAnythingElseByName) {
    for (const char* value :
         {"0", "-1", "-0", "", "fast", "MAX", "8x", " 8", "8 ", "inf", "nan", "1e999", "0x10", "+8"}) {
        EXPECT_THROW(speedOf("?speed=" + std::string(value)), std::invalid_argument) << value;
    }
    EXPECT_THROW(speedOf("?speed"), std::invalid_argument);
    try {
        speedOf("?speed=fast");
        ADD_FAILURE();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(),
                     "radio 'replay:file?speed=fast': speed 'fast' is neither 'max' nor a number above 0");
    }
}

}  // namespace

}  // namespace nearcast
