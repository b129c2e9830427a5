// SPDX-License-Identifier: Apache-2.0
#include "support/log/RecordRing.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {

namespace {

LogRecord record(std::string_view text) { return {QXLogTypeProcess, 0, nullptr, "file", 1, "method", text}; }

std::string popText(RecordRing& ring) {
    OwnedRecord out;
    switch (ring.pop(out)) {
        case RecordRing::Pop::record: return std::string(out.view().anyString);
        case RecordRing::Pop::gap: return "(gap)";
        case RecordRing::Pop::empty: break;
    }
    return "(empty)";
}

TEST(OwnedRecord, KeepsItsTextsApart) {
    const OwnedRecord owned({QXLogTypeError, 2, &owned, "file", 9, "method", "text"});
    EXPECT_EQ(owned.view().fileName, "file");
    EXPECT_EQ(owned.view().methodName, "method");
    EXPECT_EQ(owned.view().anyString, "text");
    EXPECT_EQ(owned.view().objectAddress, &owned);
    EXPECT_EQ(owned.view().lineNumber, 9u);
}

TEST(RecordRing, GivesBackInOrderOverManyRounds) {
    RecordRing ring(4);
    for (int number = 0; number < 50; number += 3) {
        for (int next = number; next < number + 3; ++next) {
            ASSERT_EQ(ring.push(record(std::to_string(next))), RecordRing::Push::taken);
        }
        for (int next = number; next < number + 3; ++next) EXPECT_EQ(popText(ring), std::to_string(next));
    }
    EXPECT_EQ(popText(ring), "(empty)");
}

class RecordRingOf : public testing::TestWithParam<std::size_t> {};

TEST_P(RecordRingOf, RefusesWhatIsBeyondItsCapacityAndTakesAgainAfterAPop) {
    RecordRing ring(GetParam());
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(ring.ready());
        for (std::size_t place = 0; place < GetParam(); ++place) {
            EXPECT_EQ(ring.push(record("in")), RecordRing::Push::taken);
        }
        EXPECT_TRUE(ring.ready());
        EXPECT_EQ(ring.push(record("out")), RecordRing::Push::full);
        EXPECT_EQ(popText(ring), "in");
        EXPECT_EQ(ring.push(record("in")), RecordRing::Push::taken);
        EXPECT_EQ(ring.push(record("out")), RecordRing::Push::full);
        for (std::size_t place = 0; place < GetParam(); ++place) EXPECT_EQ(popText(ring), "in");
        EXPECT_EQ(ring.claimed(), ring.popped());
    }
}

INSTANTIATE_TEST_SUITE_P(Capacities, RecordRingOf, testing::Values(1, 2, 8));

TEST(RecordRing, LeavesAGapForARecordThatMemoryDoesNotHold) {
    RecordRing ring(4);
    constexpr auto huge = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max());
    const std::string_view longerThanMemory("x", huge);  // never read: its length alone is refused
    EXPECT_EQ(ring.push(record("before")), RecordRing::Push::taken);
    EXPECT_EQ(ring.push(record(longerThanMemory)), RecordRing::Push::outOfMemory);
    EXPECT_EQ(ring.push(record("after")), RecordRing::Push::taken);
    EXPECT_EQ(popText(ring), "before");
    EXPECT_EQ(popText(ring), "(gap)");
    EXPECT_EQ(popText(ring), "after");
    EXPECT_EQ(popText(ring), "(empty)");
}

TEST(RecordRing, LosesAndDoublesNothingBetweenThreads) {
    constexpr std::uint32_t threads = 3;
    constexpr std::uint32_t each = 1000;
    RecordRing ring(8);
    std::vector<std::thread> crowd;
    for (std::uint32_t name = 0; name < threads; ++name) {
        crowd.emplace_back([&ring, name] {
            for (std::uint32_t number = 0; number < each; ++number) {
                const std::string text = std::to_string(number);
                LogRecord next = record(text);
                next.lineNumber = name;
                while (ring.push(next) == RecordRing::Push::full) std::this_thread::yield();
            }
        });
    }
    std::array<std::uint32_t, threads> heard{};
    OwnedRecord out;
    while (ring.popped() < threads * each) {
        if (ring.pop(out) == RecordRing::Pop::empty) {
            std::this_thread::yield();
            continue;
        }
        const LogRecord next = out.view();
        ASSERT_EQ(next.anyString, std::to_string(heard[next.lineNumber]++));
    }
    for (std::thread& thread : crowd) thread.join();
    for (const std::uint32_t count : heard) EXPECT_EQ(count, each);
}

}  // namespace

}  // namespace nearcast
