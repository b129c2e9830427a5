// SPDX-License-Identifier: Apache-2.0
#include "support/Number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace nearcast {
namespace {

TEST(Number, IntegersAreClampedTo32Bits) {
    EXPECT_EQ(clampedToInt32(-65), -65);
    EXPECT_EQ(clampedToInt32(2147483647), INT32_MAX);
    EXPECT_EQ(clampedToInt32(2147483648), INT32_MAX);
    EXPECT_EQ(clampedToInt32(-2147483648LL), INT32_MIN);
    EXPECT_EQ(clampedToInt32(-2147483649LL), INT32_MIN);
    EXPECT_EQ(clampedToInt32(std::numeric_limits<std::int64_t>::min()), INT32_MIN);
}

TEST(Number, FloatingPointIsCutTowardZeroAndClamped) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, std::int32_t> cases[] = {
        {0.0, 0},
        {-0.0, 0},
        {0.99, 0},
        {-0.99, 0},
        {-65.9, -65},
        {65.9, 65},
        {1e300, INT32_MAX},
        {-1e300, INT32_MIN},
        {infinity, INT32_MAX},
        {-infinity, INT32_MIN},
        {std::nan(""), 0},
        {-std::nan(""), 0},
        {2147483646.5, 2147483646},
        {2147483647.5, INT32_MAX},
        {2147483648.0, INT32_MAX},
        {-2147483648.9, INT32_MIN},
        {5e-324, 0},
    };
    for (const auto& [number, expected] : cases) EXPECT_EQ(int32FromNumber(number), expected) << number;
}

TEST(Number, TextIsReadAsFarAsItIsANumber) {
    const std::pair<std::string, std::int32_t> cases[] = {
        {"", 0},
        {"3", 3},
        {"-7", -7},
        {"+7", 7},
        {"  12x", 12},
        {"\t\n-1", -1},
        {"x3", 0},
        {"- 3", 0},
        {"--3", 0},
        {"3.9", 3},
        {"0x10", 0},
        {"2147483648", INT32_MAX},
        {"-2147483649", INT32_MIN},
        {std::string(100, '9'), INT32_MAX},
        {"-" + std::string(100, '9'), INT32_MIN},
        {" ", 0},
        {"-", 0},
        {"007", 7},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(int32FromText(text), expected) << text;
}

}  // namespace
}  // namespace nearcast
