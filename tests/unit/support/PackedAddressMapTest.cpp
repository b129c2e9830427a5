// SPDX-License-Identifier: Apache-2.0
#include "support/PackedAddressMap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>

namespace nearcast {
namespace {

TEST(PackedAddressMap, AnEmptyTableHasNothing) {
    PackedAddressMap<int> map;
    map.prefetch(7);
    EXPECT_EQ(map.find(7), nullptr);
    EXPECT_EQ(map.find(0), nullptr);
    EXPECT_EQ(map.find(noAddress), nullptr);
    map.erase(7);
    EXPECT_EQ(map.size(), 0U);
}

TEST(PackedAddressMap, KeepsTheLastValueOfANumber) {
    PackedAddressMap<int> map;
    map.assign(0, 1);
    map.assign(0, 2);
    EXPECT_EQ(*map.find(0), 2);
    EXPECT_EQ(map.size(), 1U);
}

TEST(PackedAddressMap, AgreesWithAPlainMapThroughInsertionsAndRemovals) {
    std::mt19937 random(1);
    PackedAddressMap<int> map;
    std::map<PackedAddress, int> plain;
    for (int step = 0; step < 20'000; ++step) {
        // Few numbers in a row, as one maker gives them out, so that places are contended for.
        const PackedAddress number = 0x001122AABB00 + random() % 300;
        if (random() % 2 == 0) {
            map.assign(number, step);
            plain[number] = step;
        } else {
            map.erase(number);
            plain.erase(number);
        }
        const PackedAddress asked = 0x001122AABB00 + random() % 300;
        const auto known = plain.find(asked);
        const int* const found = map.find(asked);
        ASSERT_EQ(found == nullptr, known == plain.end()) << step;
        if (found != nullptr) {
            ASSERT_EQ(*found, known->second) << step;
        }
        ASSERT_EQ(map.size(), plain.size());
    }
}

TEST(PackedAddressMap, ExchangesItsContents) {
    PackedAddressMap<int> few;
    PackedAddressMap<int> many;
    few.assign(1, 10);
    for (PackedAddress number = 1; number <= 100; ++number) many.assign(number, static_cast<int>(number));
    few.swap(many);
    few.prefetch(100);
    EXPECT_EQ(*few.find(100), 100);
    EXPECT_EQ(*many.find(1), 10);
    EXPECT_EQ(many.find(2), nullptr);
}

}  // namespace
}  // namespace nearcast
