// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciOptions.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast {

namespace {

HciTarget read(const char* text) { return parseHciTarget(RadioString::parse(text)); }

TEST(HciOptions, NameAController) {
    EXPECT_EQ(read("hci").index, 0);
    EXPECT_EQ(read("hci:0").index, 0);
    EXPECT_EQ(read("hci:12").index, 12);
    EXPECT_EQ(read("hci:hci2").index, 2);
    EXPECT_EQ(read("hci:65534").index, 65534);
}

TEST(HciOptions, SayWhetherToListenBesideOthers) {
    EXPECT_EQ(read("hci:0").access, HciAccess::alone);
    EXPECT_EQ(read("hci:0?beside").access, HciAccess::beside);
    EXPECT_EQ(read("hci?beside").access, HciAccess::beside);
}

TEST(HciOptions, RefuseWhatIsNoController) {
    for (const char* text : {"hci:x", "hci:-1", "hci:1x", "hci: 1", "hci:hci", "hci:65535", "hci:99999999999"}) {
        EXPECT_THROW(read(text), std::invalid_argument) << text;
    }
}

TEST(HciOptions, RefuseOptionsThatAreNotKnown) {
    EXPECT_THROW(read("hci:0?beside=yes"), std::invalid_argument);
    EXPECT_THROW(read("hci:0?alone"), std::invalid_argument);
}

}  // namespace

}  // namespace nearcast
