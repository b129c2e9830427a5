// SPDX-License-Identifier: Apache-2.0
#include <nearcast/PortException.h>

#include <gtest/gtest.h>

namespace nearcast {

namespace {

TEST(PortException, CarriesItsNameAndItsReason) {
    const PortException error("PortException", "why");
    EXPECT_EQ(error.name(), "PortException");
    EXPECT_EQ(error.reason(), "why");
    EXPECT_STREQ(error.what(), "why");
}

TEST(PortException, IsCaughtAsAStandardExceptionAndKeepsItsReason) {
    try {
        throw PortException("PortException", "why");
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "why");
    }
}

}  // namespace

}  // namespace nearcast
