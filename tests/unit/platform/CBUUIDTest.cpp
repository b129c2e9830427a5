// SPDX-License-Identifier: Apache-2.0
#include "platform/CBUUID.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast {
namespace {

constexpr const char* dongleService = "4F37D906-3F43-440C-98E0-9E709971CADF";

CBUUID of(std::string_view text) { return CBUUID::UUIDWithString(text); }

TEST(CBUUID, EqualsItselfInAnyLetterCase) {
    EXPECT_EQ(of(dongleService), of("4f37d906-3f43-440c-98e0-9e709971cadf"));
    EXPECT_EQ(of(dongleService), of("4F37d906-3f43-440C-98e0-9E709971cadf"));
}

TEST(CBUUID, DiffersWhereOneDigitDiffers) {
    const std::string text = dongleService;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '-') continue;
        std::string other = text;
        other[place] = other[place] == '0' ? '1' : '0';
        EXPECT_FALSE(of(text) == of(other)) << other;
    }
}

TEST(CBUUID, KeepsTheTextThatItWasMadeFrom) {
    for (const char* text : {dongleService, "4f37d906-3f43-440c-98e0-9e709971cadf", "180f", "not a UUID", ""}) {
        EXPECT_EQ(of(text).UUIDString(), text);
    }
}

TEST(CBUUID, TheShortFormsStandForTheLongOnes) {
    EXPECT_EQ(of("180F"), of("0000180F-0000-1000-8000-00805F9B34FB"));
    EXPECT_EQ(of("0000180f"), of("180F"));
    EXPECT_EQ(of("4F37D906"), of("4F37D906-0000-1000-8000-00805F9B34FB"));
    EXPECT_FALSE(of("4F37D906") == of(dongleService));
    EXPECT_EQ(CBUUID::UUIDWithShort(0x180F), of("180f"));
    EXPECT_EQ(CBUUID::UUIDWithShort(0x180F).UUIDString(), "180F");
    EXPECT_EQ(CBUUID::UUIDWithShort(0x4F37D906).UUIDString(), "4F37D906");
    EXPECT_EQ(CBUUID::UUIDWithShort(0xFFFF).UUIDString(), "FFFF");
    EXPECT_EQ(CBUUID::UUIDWithShort(0x10000).UUIDString(), "00010000");
}

TEST(CBUUID, OctetsAreWrittenInTheirOrderInUpperCase) {
    const CBUUID::Bytes octets{0x4F, 0x37, 0xD9, 0x06, 0x3F, 0x43, 0x44, 0x0C,
                               0x98, 0xE0, 0x9E, 0x70, 0x99, 0x71, 0xCA, 0xDF};
    EXPECT_EQ(CBUUID::UUIDWithBytes(octets), of(dongleService));
    EXPECT_EQ(CBUUID::UUIDWithBytes(octets).UUIDString(), dongleService);
}

TEST(CBUUID, HasAShortestText) {
    EXPECT_EQ(of("0000180f-0000-1000-8000-00805f9b34fb").shortest().UUIDString(), "180F");
    EXPECT_EQ(of("0000180f").shortest().UUIDString(), "180F");
    EXPECT_EQ(of("4f37d906-0000-1000-8000-00805f9b34fb").shortest().UUIDString(), "4F37D906");
    EXPECT_EQ(of("4f37d906-3f43-440c-98e0-9e709971cadf").shortest().UUIDString(), dongleService);
    EXPECT_EQ(of("0000180f-0000-1000-8000-00805f9b34fc").shortest().UUIDString(),
              "0000180F-0000-1000-8000-00805F9B34FC");
    EXPECT_EQ(of("no UUID").shortest().UUIDString(), "no UUID");
}

TEST(CBUUID, ATextThatIsNoneEqualsTheSameTextInAnyLetterCaseAndNoUUID) {
    EXPECT_EQ(of("Not a UUID"), of("not A uuid"));
    EXPECT_FALSE(of("not a UUID") == of("not a UUID "));
    const std::string misshapen[] = {"4F37D9063F43440C98E09E709971CADF", "4F37D906-3F43-440C-98E0-9E709971CADG",
                                     "4F37D906-3F43-440C-98E09-E709971CADF", std::string(dongleService) + " ", ""};
    for (const std::string& text : misshapen) {
        EXPECT_FALSE(of(text) == of(dongleService)) << text;
        EXPECT_EQ(of(text), of(text)) << text;
    }
    EXPECT_FALSE(of("") == of("180F"));
}

}  // namespace
}  // namespace nearcast
