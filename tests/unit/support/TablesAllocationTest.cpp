// SPDX-License-Identifier: Apache-2.0
// Tables and windows for which there is no more memory: they throw, and hold what they held.
#include "allocation/Allocations.h"
#include "support/AddressTable.h"
#include "support/NumberedNames.h"
#include "support/SlidingMaximum.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using allocation::Failing;

/// Runs `work` with its n-th allocation failing.
/// @return whether there was one
template <class Work>
bool failOne(std::uint64_t n, Failing failing, const Work& work) {
    const allocation::Failure failure(n, failing);
    try {
        work();
        EXPECT_FALSE(allocation::Failure::end()) << "it does without";
        return false;
    } catch (const std::bad_alloc&) {
        return allocation::Failure::end();
    }
}

std::string longText(int number) { return "a text that is no address and lies on the heap " + std::to_string(number); }

TEST(TablesAllocation, ANameThatFindsNoMemoryHasNoNumberAndTheNextOneGetsOneOfItsOwn) {
    allocation::failEachAllocation([](std::uint64_t n, Failing failing) {
        NumberedNames names;
        const std::string first = longText(1);
        const std::string second = longText(2);
        const bool failed = failOne(n, failing, [&] { names.enter(AddressKey(first)); });
        EXPECT_EQ(names.find(AddressKey(first)) == noAddress, failed) << n;
        const PackedAddress numbers[] = {names.enter(AddressKey(second)), names.enter(AddressKey(first))};
        EXPECT_NE(numbers[0], numbers[1]) << n;
        EXPECT_EQ(names.name(numbers[0]), second);
        EXPECT_EQ(names.name(numbers[1]), first);
        for (const PackedAddress number : numbers) names.remove(number);
        EXPECT_EQ(names.find(AddressKey(first)), noAddress);
        return failed;
    });
}

void addAll(AddressTable<int>& table, int count) {
    for (int number = 0; number < count; ++number) table.add(AddressKey(longText(number)), number);
}

TEST(TablesAllocation, AValueThatFindsNoMemoryIsNotInTheTableAndAllOthersAre) {
    for (const int count : {0, 1, 10, 40}) {  // a table of 16, and of 64 places grows at the eleventh, and at the 43rd
        allocation::failEachAllocation([count](std::uint64_t n, Failing failing) {
            AddressTable<int> table;
            addAll(table, count);
            const std::string text = longText(count);
            const bool failed = failOne(n, failing, [&] { table.add(AddressKey(text), count); });
            EXPECT_EQ(table.find(AddressKey(text)) == nullptr, failed) << n;
            if (failed) table.add(AddressKey(text), count);
            EXPECT_EQ(table.size(), static_cast<std::size_t>(count) + 1);
            AddressText space;
            for (int number = 0; number <= count; ++number) {
                EXPECT_EQ(table.addressAt(static_cast<std::size_t>(number), space).text(), longText(number)) << n;
                EXPECT_EQ(*table.find(AddressKey(longText(number))), number) << n;
            }
            while (!table.empty()) table.eraseAt(0);
            return failed;
        });
    }
}

TEST(TablesAllocation, AWindowThatFindsNoMemoryForASampleIsAsBeforeIt) {
    for (const std::uint64_t window : {9U, 20U, 1000U}) {
        SlidingMaximum failing(window);
        SlidingMaximum plain(window);
        int failures = 0;
        for (std::int32_t sample = 0; sample > -300; --sample) {
            const std::int32_t reading = sample % 100 == 0 ? 5 : sample;  // falls, so that all stay possible maxima
            const allocation::Failure failure(1);
            try {
                failing.add(reading);
            } catch (const std::bad_alloc&) {
                ++failures;
                EXPECT_EQ(failing.count(), plain.count());
                failing.add(reading);
            }
            allocation::Failure::end();
            plain.add(reading);
            ASSERT_EQ(failing.count(), plain.count());
            ASSERT_EQ(SlidingMaximum(0).count(), 0U);
        }
        EXPECT_GT(failures, 0);
        for (std::int32_t sample = 0; sample < 2000; ++sample) ASSERT_EQ(failing.add(-1000), plain.add(-1000));
    }
}

TEST(TablesAllocation, AWindowOfEightTakesNoMemory) {
    SlidingMaximum window(8);
    const allocation::Failure failure(1);
    for (std::int32_t sample = 0; sample < 100; ++sample) window.add(-sample);
    allocation::Failure::end();
    EXPECT_EQ(window.count(), 8U);
}

TEST(TablesAllocation, AWindowWhoseRunsCountToFewTakesMemoryBeforeItChangesToo) {
    SlidingMaximumOf<std::uint8_t> failing(5000);
    SlidingMaximumOf<std::uint8_t> plain(5000);
    for (int sample = 0; sample < 4000; ++sample) {
        const allocation::Failure failure(1);
        try {
            failing.add(-1);
        } catch (const std::bad_alloc&) {
            failing.add(-1);
        }
        allocation::Failure::end();
        plain.add(-1);
        ASSERT_EQ(failing.count(), plain.count());
    }
    for (int sample = 0; sample < 6000; ++sample) ASSERT_EQ(failing.add(-2 - sample), plain.add(-2 - sample));
}

}  // namespace
}  // namespace nearcast
