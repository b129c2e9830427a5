// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/RadioString.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast {

namespace {

TEST(RadioString, TakesBluezWithAndWithoutAnAdapter) {
    EXPECT_EQ(RadioString::parse("bluez").kind, "bluez");
    EXPECT_EQ(RadioString::parse("bluez").argument, "");
    EXPECT_EQ(RadioString::parse("bluez:hci1").argument, "hci1");
    EXPECT_EQ(RadioString::parse("bluez:hci12").argument, "hci12");
}

TEST(RadioString, RefusesWhatIsNoAdapter) {
    for (const char* wrong : {"bluez:1", "bluez:hci", "bluez:hci1x", "bluez:HCI1", "bluez:hci-1", "bluez:hci123456",
                              "bluez:/org/bluez/hci0", "bluez:hci0/.."}) {
        EXPECT_THROW(RadioString::parse(wrong), std::invalid_argument) << wrong;
    }
}

TEST(RadioString, RefusesOptionsThatBluezDoesNotHave) {
    EXPECT_THROW(RadioString::parse("bluez?speed=1"), std::invalid_argument);
}

}  // namespace

}  // namespace nearcast
