// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Address.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>

namespace nearcast {
namespace {

struct Spelling {
    const char* text;
    const char* address;  ///< null: it is none
};

class AddressSpelling : public testing::TestWithParam<Spelling> {};

TEST_P(AddressSpelling, IsReadAsPeopleWriteIt) {
    const auto address = Address::parse(GetParam().text);
    ASSERT_EQ(address.has_value(), GetParam().address != nullptr);
    if (!address) return;
    EXPECT_EQ(address->text(), GetParam().address);
}

constexpr Spelling spellings[] = {
    {"00:11:22:AA:BB:CC", "00:11:22:AA:BB:CC"},
    {"00:11:22:aa:Bb:cC", "00:11:22:AA:BB:CC"},
    {"00-11-22-aa-bb-cc", "00:11:22:AA:BB:CC"},
    {"00_11_22_aa_bb_cc", "00:11:22:AA:BB:CC"},
    {"00 11 22 aa bb cc", "00:11:22:AA:BB:CC"},
    {"00.11.22.aa.bb.cc", "00:11:22:AA:BB:CC"},
    {"0011.22aa.bbcc", "00:11:22:AA:BB:CC"},
    {"0011 22aa bbcc", "00:11:22:AA:BB:CC"},
    {"001122aabbcc", "00:11:22:AA:BB:CC"},
    {"QX001122aabbcc", "00:11:22:AA:BB:CC"},
    {"  00:11:22:AA:BB:CC\r\n", "00:11:22:AA:BB:CC"},
    {"FF:FF:FF:FF:FF:FF", "FF:FF:FF:FF:FF:FF"},
    {"00:00:00:00:00:00", "00:00:00:00:00:00"},
    {"", nullptr},
    {"  ", nullptr},
    {"QX", nullptr},
    {"qx001122aabbcc", nullptr},
    {"00:11:22:AA:BB", nullptr},
    {"00:11:22:AA:BB:CC:DD", nullptr},
    {"00:11:22:AA:BB:CG", nullptr},
    {"00:11-22:AA:BB:CC", nullptr},
    {"00:11:22:AA:BB:CC:", nullptr},
    {":00:11:22:AA:BB:CC", nullptr},
    {"0:11:22:AA:BB:CCC", nullptr},
    {"00,11,22,AA,BB,CC", nullptr},
    {"00a11a22aAAaBBaCC", nullptr},
    {"0x1122AABBCC", nullptr},
    {"001122AABBC", nullptr},
    {"001122AABBCCD", nullptr},
    {"+01122AABBCC", nullptr},
    {"00:11:22:AA:BB:C\xC3", nullptr},
};
INSTANTIATE_TEST_SUITE_P(All, AddressSpelling, testing::ValuesIn(spellings));

TEST(Address, MadeOfATextThatIsNoneNamesIt) {
    try {
        const Address address("front desk");
        FAIL() << address;
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "'front desk' is no address: twelve hexadecimal digits, as in 00:11:22:AA:BB:CC");
    }
}

TEST(Address, HeardFromTheAirKeepsItsLetters) {
    EXPECT_EQ(Address::asHeard("00:11:22:aa:bb:cc").text(), "00:11:22:aa:bb:cc");
    EXPECT_EQ(Address::asHeard("").text(), "");
}

TEST(Address, IsUsualOnlyInTheSpellingThatDonglesAreHeardUnder) {
    EXPECT_TRUE(Address("00-11-22-aa-bb-cc").isUsual());
    EXPECT_TRUE(Address::asHeard("00:11:22:AA:BB:CC").isUsual());
    EXPECT_FALSE(Address::asHeard("00:11:22:aa:bb:cc").isUsual());
    EXPECT_FALSE(Address::asHeard("").isUsual());
}

TEST(Address, IsComparedAndPrintedByItsLetters) {
    const std::set<Address> addresses{Address("00:11:22:AA:BB:CC"), Address("001122aabbcc"),
                                      Address::asHeard("00:11:22:aa:bb:cc")};
    EXPECT_EQ(addresses.size(), 2U);
    std::ostringstream out;
    out << *addresses.begin();
    EXPECT_EQ(out.str(), "00:11:22:AA:BB:CC");
}

}  // namespace
}  // namespace nearcast
