// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingInput.h"

#include "unit/platform/replay/CaptureBytes.h"

#include <gtest/gtest.h>

namespace nearcast::replay {

namespace {

Octets counted(std::size_t count) {
    Octets bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
    return bytes;
}

Octets copied(std::span<const std::uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

TEST(RecordingInput, GivesAllBytesInOrderHoweverTheyCome) {
    const Octets bytes = counted(200'000);
    for (const std::size_t step : {std::size_t{1}, std::size_t{1000}, std::size_t{1} << 20}) {
        RecordingInput input(sourceOf(bytes, step));
        Octets read;
        for (std::size_t size = 1; !input.atEnd(); size = size * 3 % 70'001) {
            EXPECT_EQ(input.offset(), read.size());
            read = read + copied(input.take(size));
        }
        EXPECT_EQ(read, bytes) << step;
    }
}

TEST(RecordingInput, ShowsBytesWithoutTakingThem) {
    RecordingInput input(sourceOf(hex("01 02 03"), 1));
    EXPECT_EQ(copied(input.peek(2)), hex("01 02"));
    EXPECT_EQ(input.offset(), 0U);
    EXPECT_EQ(copied(input.peek(9)), hex("01 02 03"));
    EXPECT_EQ(copied(input.take(2)), hex("01 02"));
    EXPECT_EQ(input.offset(), 2U);
}

TEST(RecordingInput, TellsWhereSomethingBeganThatIsNotWhole) {
    const auto damagedAt = [](auto&& action) -> std::optional<std::uint64_t> {
        RecordingInput input(sourceOf(hex("01 02 03")));
        input.take(1);
        try {
            action(input);
        } catch (const RecordingDamage& damage) {
            return damage.offset();
        }
        return std::nullopt;
    };
    EXPECT_EQ(damagedAt([](RecordingInput& input) { input.takeAll(3, 1); }), 1U);
    EXPECT_EQ(damagedAt([](RecordingInput& input) { input.takeAll(2, 1); }), std::nullopt);
    EXPECT_EQ(damagedAt([](RecordingInput& input) { input.skipAll(3, 1); }), 1U);
    EXPECT_EQ(damagedAt([](RecordingInput& input) { input.skipAll(~std::uint64_t{0}, 1); }), 1U);
    EXPECT_EQ(damagedAt([](RecordingInput& input) { input.skipAll(2, 1); }), std::nullopt);
}

TEST(RecordingInput, TakesWhatHasComeWithoutWaitingForMore) {
    RecordingInput input(sourceOf(hex("01 02 03 04 05"), 3));
    EXPECT_EQ(copied(input.takeSome(2)), hex("01 02"));
    EXPECT_EQ(copied(input.takeSome(9)), hex("03"));
    EXPECT_EQ(copied(input.takeSome(9)), hex("04 05"));
    EXPECT_EQ(input.offset(), 5U);
    EXPECT_TRUE(input.takeSome(9).empty());
}

}  // namespace

}  // namespace nearcast::replay
