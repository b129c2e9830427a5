// SPDX-License-Identifier: Apache-2.0
#include "support/AddressTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace nearcast {
namespace {

TEST(AddressText, SpellsSixOctetsInUpperCase) {
    EXPECT_EQ(AddressText(0x00112AFFBBCC).view(), "00:11:2A:FF:BB:CC");
    EXPECT_EQ(AddressText(0).view(), "00:00:00:00:00:00");
}

TEST(AddressText, IsReadOnlyAsItIsSpelt) {
    EXPECT_EQ(packedAddress("00:11:2A:FF:BB:CC"), 0x00112AFFBBCCU);
    EXPECT_EQ(packedAddress("FF:FF:FF:FF:FF:FF"), 0xFFFFFFFFFFFFU);
    for (const char* const other :
         {"", "00:11:2a:FF:BB:CC", "00:11:2A:FF:BB:CC ", "00:11:2A:FF:BB:C", "00-11-2A-FF-BB-CC", "0G:11:2A:FF:BB:CC",
          "001:1:2A:FF:BB:CC", "00:11:2A:FF:BB:C@", "00:11:2A:FF:BB:C/"}) {
        EXPECT_EQ(packedAddress(other), noAddress) << other;
    }
}

void eraseOne(AddressTable<int>& table, std::string_view text) {
    AddressText space;
    for (std::size_t place = 0; place < table.size(); ++place) {
        if (table.addressAt(place, space).text() == text) return table.eraseAt(place);
    }
    FAIL() << text << " is not there";
}

TEST(AddressTable, TellsTextsApartLetterByLetter) {
    AddressTable<int> table;
    for (const char* const text : {"00:11:22:AA:BB:CC", "00:11:22:aa:bb:cc", "Q", ""}) {
        table.add(AddressKey(text), static_cast<int>(table.size()));
    }
    EXPECT_EQ(*table.find(AddressKey("00:11:22:AA:BB:CC")), 0);
    EXPECT_EQ(*table.find(AddressKey("00:11:22:aa:bb:cc")), 1);
    EXPECT_EQ(*table.find(AddressKey("")), 3);
    EXPECT_EQ(table.find(AddressKey("q")), nullptr);
    eraseOne(table, "Q");
    EXPECT_EQ(table.find(AddressKey("Q")), nullptr);
    EXPECT_EQ(table.size(), 3U);
}

std::string someText(std::uint32_t number) {
    if (number % 3 == 0) return "name " + std::to_string(number);
    return std::string(AddressText(number).view());
}

TEST(AddressTable, AgreesWithAPlainMapAndKnowsTheAddressOfEveryPlace) {
    std::mt19937 random(5);
    AddressTable<int> table;
    std::map<std::string, int> plain;
    for (int step = 0; step < 5000; ++step) {
        const std::string text = someText(static_cast<std::uint32_t>(random() % 100));
        const AddressKey key(text);
        if (table.find(key) != nullptr) {
            ASSERT_EQ(*table.find(key), plain.at(text));
            eraseOne(table, text);
            plain.erase(text);
        } else {
            ASSERT_EQ(plain.count(text), 0U);
            table.add(key, step);
            plain[text] = step;
        }
        ASSERT_EQ(table.size(), plain.size());
        AddressText space;
        for (std::size_t place = 0; place < table.size(); ++place) {
            ASSERT_EQ(plain.at(std::string(table.addressAt(place, space).text())), table[place]);
        }
    }
}

TEST(AddressTable, TheLastOneTakesThePlaceOfOneThatGoes) {
    AddressTable<int> table;
    for (int number = 0; number < 3; ++number)
        table.add(AddressKey(someText(static_cast<std::uint32_t>(number))), number);
    table.eraseAt(0);
    EXPECT_EQ(table[0], 2);
    EXPECT_EQ(table[1], 1);
    table.eraseAt(1);
    EXPECT_EQ(table[0], 2);
    EXPECT_EQ(table.size(), 1U);
}

}  // namespace
}  // namespace nearcast
