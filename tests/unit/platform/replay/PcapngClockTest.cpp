// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/PcapngReader.h"

#include <gtest/gtest.h>

#include <limits>

namespace nearcast::replay {

namespace {

struct ClockCase {
    const char* description;
    std::uint8_t resolution;
    std::int64_t offsetSeconds;
    std::uint64_t ticks;
    std::int64_t nanoseconds;
};

constexpr std::uint64_t mostTicks = ~std::uint64_t{0};

TEST(PcapngClock, CountsInAnyUnit) {
    const ClockCase cases[] = {
        {"microseconds", 6, 0, 1'646'745'455'923'245, 1'646'745'455'923'245'000},
        {"seconds", 0, 0, 5, 5'000'000'000},
        {"milliseconds", 3, 0, 1'234, 1'234'000'000},
        {"nanoseconds", 9, 0, 1'646'745'455'923'245'678, 1'646'745'455'923'245'678},
        {"picoseconds", 12, 0, 1'000'000'001'999, 1'000'000'001},
        {"the finest decimal unit that reaches a second", 19, 0, 10'000'000'000'000'000'000U, 1'000'000'000},
        {"a finer one", 20, 0, mostTicks, 0},
        {"the finest that can be written", 127, 0, mostTicks, 0},
        {"whole seconds as a power of two", 0x80, 0, 5, 5'000'000'000},
        {"1/1024 s", 0x80 | 10, 0, 1'024 + 512, 1'500'000'000},
        {"1/2^32 s", 0x80 | 32, 0, (std::uint64_t{3} << 32) + (std::uint64_t{1} << 30), 3'250'000'000},
        {"1/2^63 s", 0x80 | 63, 0, (std::uint64_t{1} << 63) + (std::uint64_t{1} << 62), 1'500'000'000},
        {"1/2^64 s", 0x80 | 64, 0, mostTicks, 0},
        {"an offset", 6, 1'000, 500'000, 1'000'500'000'000},
        {"an offset back", 6, -1'000, 500'000, -999'500'000'000},
    };
    for (const ClockCase& one : cases) {
        const PcapngClock clock{one.resolution, one.offsetSeconds};
        EXPECT_EQ(clock.nanoseconds(one.ticks), one.nanoseconds) << one.description;
    }
}

TEST(PcapngClock, StaysWithinItsNumbersWhateverTheFileSays) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    for (int resolution = 0; resolution < 256; ++resolution) {
        for (const std::int64_t offset : {least, least + 1, std::int64_t{-1}, std::int64_t{0}, most - 1, most}) {
            const PcapngClock clock{static_cast<std::uint8_t>(resolution), offset};
            EXPECT_LE(clock.nanoseconds(0), clock.nanoseconds(mostTicks)) << resolution << " " << offset;
        }
    }
}

}  // namespace

}  // namespace nearcast::replay
