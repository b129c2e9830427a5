// SPDX-License-Identifier: Apache-2.0
#include "doubles/BluezReading.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

namespace nearcast::bluez {

namespace {

BluezReading read(const Octets& data) { return BluezReading::of(data); }

Octets name(std::string_view text) { return structure(0x09, octetsOf(text)); }

TEST(BluezReading, SpellsServicesInFullAndEachOnce) {
    const BluezReading result = read(structure(0x03, hex("0F18 0F18 0A")) + structure(0x05, hex("78563412")) +
                                     structure(0x07, hex("DFCA7199709EE0980C44433F06D9374F")));
    EXPECT_EQ(result.services,
              (std::vector<std::string>{"0000180f-0000-1000-8000-00805f9b34fb", "12345678-0000-1000-8000-00805f9b34fb",
                                        "4f37d906-3f43-440c-98e0-9e709971cadf"}));
}

TEST(BluezReading, HasEachCompanyOnceWithItsLastOctets) {
    const BluezReading result = read(structure(0xFF, hex("4C00 01")) + structure(0xFF, hex("FFFF 02")) +
                                     structure(0xFF, hex("4C00 03")) + structure(0xFF, hex("4C")));
    EXPECT_EQ(result.manufacturers, (std::vector<BluezReading::Manufacturer>{{0x004C, {3}}, {0xFFFF, {2}}}));
}

TEST(BluezReading, ShowsNoMoreOfACompanyThanALegacyAdvertisementHolds) {
    EXPECT_EQ(read(structure(0xFF, Octets(2 + 27, 1))).manufacturers.size(), 1U);
    EXPECT_EQ(read(structure(0xFF, Octets(2 + 28, 1))).manufacturers.size(), 0U);
}

TEST(BluezReading, TakesTheLastNameAndMakesItUTF8) {
    EXPECT_EQ(read(name("first") + structure(0x08, octetsOf("last"))).name, "last");
    EXPECT_EQ(read(name(" K\xC3\xBC ")).name, " K\xC3\xBC ");
    EXPECT_EQ(read(name("\xFF\xFE"
                        "A"))
                  .name,
              "A");
    EXPECT_EQ(read(name(std::string_view("AB\0CD", 5))).name, "AB");
    EXPECT_EQ(read(name(std::string_view("AB\0\0", 4))).name, "AB");
    EXPECT_FALSE(read(name("")).name);
    EXPECT_FALSE(read(name("\xFF")).name);
}

TEST(BluezReading, EndsAtALengthOfZeroAndAtWhatRunsPastTheEnd) {
    EXPECT_FALSE(read(hex("00") + name("A")).name);
    EXPECT_EQ(read(name("A") + hex("05 09 42")).name, "A");
    EXPECT_EQ(read(name("A") + hex("05")).name, "A");
    EXPECT_FALSE(read({}).name);
}

}  // namespace

}  // namespace nearcast::bluez
