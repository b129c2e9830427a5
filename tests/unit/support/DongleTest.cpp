// SPDX-License-Identifier: Apache-2.0
#include "support/Dongle.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using Payload = std::vector<std::uint8_t>;

/// The mark and as many octets behind it as make it so long: 01, 02 and on.
Payload marked(std::size_t length) {
    Payload payload{0xFF, 0xFF};
    for (std::uint8_t octet = 1; payload.size() < length; ++octet) payload.push_back(octet);
    return payload;
}

TEST(Dongle, HasItsManufacturerDataCountBeforeOthersAndTheLastOfACompanyBeforeItsFirst) {
    constexpr std::uint16_t some = 0x004C;
    constexpr std::uint16_t other = 0x0006;
    EXPECT_TRUE(dongle::countsInstead(dongle::company, some));
    EXPECT_TRUE(dongle::countsInstead(dongle::company, dongle::company));
    EXPECT_TRUE(dongle::countsInstead(some, some));
    EXPECT_FALSE(dongle::countsInstead(some, other));
    EXPECT_FALSE(dongle::countsInstead(some, dongle::company));
}

struct Case {
    const char* what;
    std::optional<Payload> manufacturerData;
    std::optional<std::string> name;
    std::optional<std::string> address;  ///< nothing: none is read
};

void expectRead(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        DongleAddress address;
        ASSERT_EQ(address.read(each.manufacturerData, each.name), each.address.has_value());
        if (each.address) {
            EXPECT_EQ(address.text(), *each.address);
        }
    }
}

TEST(DongleAddress, IsReadFromSixOctetsBehindTheMark) {
    expectRead({
        {"just the address", {{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC}}, {}, "00:11:22:AA:BB:CC"},
        {"of 8 octets, and a name", marked(8), "QX001122AABBCC", "01:02:03:04:05:06"},
        {"of 9 octets", marked(9), {}, "01:02:03:04:05:06"},
        {"of 30 octets", marked(30), {}, "01:02:03:04:05:06"},
    });
}

TEST(DongleAddress, IsNotReadFromAMarkedPayloadThatEndsEarlyWhateverTheNameSays) {
    expectRead({
        {"the mark alone", marked(2), "QX001122AABBCC", {}},
        {"an octet of the address", marked(3), "QX001122AABBCC", {}},
        {"five octets of it", marked(7), "QX001122AABBCC", {}},
    });
}

TEST(DongleAddress, IsReadFromTheNameWhereThePayloadDoesNotBeginWithTheMark) {
    const std::string address = "00:11:22:AA:BB:CC";
    const std::string name = "QX001122AABBCC";
    expectRead({
        {"no octet", Payload{}, name, address},
        {"one octet", {{0xFF}}, name, address},
        {"another company", {{0x4C, 0x00}}, name, address},
        {"half of the mark first", {{0xFF, 0x00, 1, 2, 3, 4, 5, 6}}, name, address},
        {"half of the mark second", {{0xFE, 0xFF, 1, 2, 3, 4, 5, 6}}, name, address},
        {"the mark in the middle", {{0x4C, 0x00, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6}}, name, address},
        {"30 octets", Payload(30, 0x00), name, address},
    });
}

TEST(DongleAddress, IsNotReadWithoutManufacturerDataOrWithoutAName) {
    expectRead({
        {"no manufacturer data", {}, "QX001122AABBCC", {}},
        {"nothing at all", {}, {}, {}},
        {"another company, and no name", {{0x4C, 0x00}}, {}, {}},
    });
}

TEST(DongleAddress, IsCutOutOfANameOfFourteenCharactersAndMore) {
    const Payload other{0x4C, 0x00};
    expectRead({
        {"14 characters", other, "QX001122AABBCC", "00:11:22:AA:BB:CC"},
        {"lower case stays", other, "QX001122aabbcc", "00:11:22:aa:bb:cc"},
        {"15 characters", other, "QX001122AABBCCD", "00:11:22:AA:BB:CC"},
        {"neither marker nor digits", other, "Printer at bar", "in:te:r :at: b:ar"},
        {"characters of several octets", other, "QXäöü123456789", "äö:ü1:23:45:67:89"},
        {"14 characters in 50 octets", other, "QX👍👎👍👎👍👎👍👎👍👎👍👎", "👍👎:👍👎:👍👎:👍👎:👍👎:👍👎"},
        {"the marker across two pieces", other, "...QX123456789", ".Q:X1:23:45:67:89"},
    });
}

TEST(DongleAddress, IsAShortNameAsItIsUnlessTheMarkerStandsInIt) {
    const Payload other{0x4C, 0x00};
    expectRead({
        {"13 characters with the marker", other, "QX001122AABBC", {}},
        {"13 characters in more octets", other, "QXäöü12345678", {}},
        {"13 characters without it", other, "Bar and grill", "Bar and grill"},
        {"the marker in the middle", other, "the QX dongle", {}},
        {"the marker at the end", other, "QXQ", {}},
        {"the marker in lower case", other, "qx0011", "qx0011"},
        {"empty", other, "", ""},
        {"the marker in a piece", other, "..QX0123456789", {}},
    });
}

TEST(DongleAddress, HasTheKeyOfAnAddressHoweverItWasRead) {
    DongleAddress fromPayload;
    ASSERT_TRUE(fromPayload.read(Payload{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC}, {}));
    EXPECT_EQ(fromPayload.key().packed(), 0x001122AABBCCU);
    DongleAddress fromName;
    ASSERT_TRUE(fromName.read(Payload{}, "QX001122AABBCC"));
    EXPECT_EQ(fromName.key().packed(), 0x001122AABBCCU);
    ASSERT_TRUE(fromName.read(Payload{}, "QX001122aabbcc"));
    EXPECT_EQ(fromName.key().packed(), noAddress) << "another spelling is another text";
}

TEST(Dongle, WhatIsWrittenIsRead) {
    constexpr std::uint8_t octets[] = {0x02, 0x4E, 0x43, 0x00, 0x00, 0x01};
    const std::string text = "02:4E:43:00:00:01";
    EXPECT_EQ(dongle::payloadOf(octets), (Payload{0xFF, 0xFF, 0x02, 0x4E, 0x43, 0x00, 0x00, 0x01}));
    EXPECT_EQ(dongle::nameOf(text), "QX024E43000001");
    DongleAddress address;
    ASSERT_TRUE(address.read(dongle::payloadOf(octets), {}));
    EXPECT_EQ(address.text(), text);
    ASSERT_TRUE(address.read(Payload{}, dongle::nameOf(text)));
    EXPECT_EQ(address.text(), text);
}

// What dongles in shops advertise: it never changes.
TEST(Dongle, TheServiceIsTheOneThatDonglesAdvertise) {
    EXPECT_EQ(dongle::serviceUUID, "4F37D906-3F43-440C-98E0-9E709971CADF");
    EXPECT_EQ(dongle::company, 0xFFFF);
}

}  // namespace
}  // namespace nearcast
