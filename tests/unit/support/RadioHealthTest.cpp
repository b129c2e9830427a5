// SPDX-License-Identifier: Apache-2.0
#include <nearcast/RadioHealth.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace nearcast {
namespace {

TEST(NameOfAState, IsAnotherForEachState) {
    std::set<std::string> names;
    for (int state = CBManagerStateUnknown; state <= CBManagerStatePoweredOn; ++state) {
        names.insert(nameOf(static_cast<CBManagerState>(state)));
    }
    EXPECT_EQ(names, (std::set<std::string>{"unknown", "resetting", "unsupported", "unauthorized", "powered off",
                                            "powered on"}));
}

TEST(NameOfAState, ThatNobodyKnowsIsItsNumber) {
    EXPECT_EQ(nameOf(static_cast<CBManagerState>(6)), "6");
    EXPECT_EQ(nameOf(static_cast<CBManagerState>(-1)), "-1");
}

}  // namespace
}  // namespace nearcast
