// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/AdapterName.h"

#include <gtest/gtest.h>

namespace nearcast {
namespace {

constexpr DeviceAddress sample = {0x00, 0x1A, 0x7D, 0xDA, 0x71, 0x0F};

TEST(AdapterAddress, IsReadInCapitalLettersAndInSmallOnes) {
    EXPECT_EQ(readAdapterAddress("00:1A:7D:DA:71:0F"), sample);
    EXPECT_EQ(readAdapterAddress("00:1a:7d:da:71:0f"), sample);
    EXPECT_EQ(readAdapterAddress("00:1a:7D:dA:71:0F"), sample);
}

TEST(AdapterAddress, IsNothingElse) {
    for (const char* text :
         {"", "0", "hci0", "00:1A:7D:DA:71", "00:1A:7D:DA:71:0", "00:1A:7D:DA:71:0F:", "00:1A:7D:DA:71:0FF",
          "00:1A:7D:DA:71:0G", "00:1A:7D:DA:71:-F", "00:1A:7D:DA:71: F", "00:1A:7D:DA:71:+F", "00-1A-7D-DA-71-0F",
          "001A7DDA710F", ":00:1A:7D:DA:71:0F", "00:1A:7D:DA:71.0F", "0x:1A:7D:DA:71:0F"}) {
        EXPECT_FALSE(readAdapterAddress(text)) << text;
    }
}

TEST(AdapterAddress, IsWrittenAsItIsRead) {
    EXPECT_EQ(adapterAddressText(sample), "00:1A:7D:DA:71:0F");
    EXPECT_EQ(readAdapterAddress(adapterAddressText(sample)), sample);
}

TEST(AdapterAddress, OfZerosNamesNoAdapter) {
    EXPECT_FALSE(namesAdapter(DeviceAddress{}));
    EXPECT_TRUE(namesAdapter({0, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(namesAdapter(sample));
}

TEST(AdapterName, IsANumberAsTheKernelGivesThem) {
    for (const char* good : {"hci0", "hci12", "hci99999"}) EXPECT_TRUE(isAdapterNumber(good)) << good;
    for (const char* wrong : {"", "hci", "0", "HCI0", "hci0x", "hci 0", "hci100000", "00:1A:7D:DA:71:13"}) {
        EXPECT_FALSE(isAdapterNumber(wrong)) << wrong;
    }
}

TEST(AdapterName, IsAnAddressInCapitals) {
    EXPECT_EQ(adapterAddress("00:1A:7D:DA:71:13"), "00:1A:7D:DA:71:13");
    EXPECT_EQ(adapterAddress("af:fa:09:90:Aa:0f"), "AF:FA:09:90:AA:0F");
    EXPECT_EQ(adapterAddress("FF:FF:FF:FF:FF:FF"), "FF:FF:FF:FF:FF:FF");
}

TEST(AdapterName, IsNothingElse) {
    for (const char* wrong : {"", "hci0", "00:00:00:00:00:00", "00:1A:7D:DA:71:1", "00:1A:7D:DA:71:133",
                              "00-1A-7D-DA-71-13", "00:1A:7D:DA:71:1G", "`0:1A:7D:DA:71:13"}) {
        EXPECT_EQ(adapterAddress(wrong), "") << wrong;
    }
}

TEST(AdapterName, StandsInRadioStringsInBothForms) {
    EXPECT_TRUE(namesAdapter("hci0"));
    EXPECT_TRUE(namesAdapter("00:1a:7d:da:71:13"));
    EXPECT_FALSE(namesAdapter("00:00:00:00:00:00"));
    EXPECT_FALSE(namesAdapter("0"));
}

}  // namespace
}  // namespace nearcast
