// SPDX-License-Identifier: Apache-2.0
#include "common/files/GzipOutput.h"

#include "platform/files/ByteSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace nearcast::cli {
namespace {

/// What can be unpacked of packed bytes, cut or not.
std::string unpackedOf(const std::string& packed) {
    const ByteSource source = [rest = std::string_view(packed)](std::span<std::uint8_t> room) mutable {
        const std::size_t count = std::min(room.size(), rest.size());
        std::copy_n(rest.begin(), count, room.begin());
        rest.remove_prefix(count);
        return count;
    };
    const ByteSource unpacking = unpacked(source, "packed");
    std::string bytes;
    std::array<std::uint8_t, 1000> room{};
    try {
        while (const std::size_t count = unpacking(room)) bytes.append(room.begin(), room.begin() + count);
    } catch (const PackedDamage&) {
        bytes += " (cut)";
    }
    return bytes;
}

struct GzipOutputTest : testing::Test {
    std::string packed;
    GzipOutput::Out out = [this](std::string_view bytes) { packed += bytes; };
};

TEST_F(GzipOutputTest, PacksWhatIsUnpackedAgain) {
    std::string all;
    GzipOutput output(out, false);
    for (int line = 0; line < 20'000; ++line) {
        const std::string text = "line " + std::to_string(line * 7919) + "\n";
        output.write(text);
        all += text;
    }
    output.finish();
    EXPECT_EQ(unpackedOf(packed), all);
    EXPECT_LT(packed.size(), all.size() / 2);
}

TEST_F(GzipOutputTest, PacksNothing) {
    GzipOutput output(out, true);
    output.write("");
    output.finish();
    EXPECT_EQ(packed.substr(0, 2), "\x1F\x8B");
    EXPECT_EQ(unpackedOf(packed), "");
}

TEST_F(GzipOutputTest, HandsEachPieceOutAtOnceWhereItIsTo) {
    GzipOutput output(out, true);
    std::string all;
    for (const char* piece : {"one ", "two ", "three"}) {
        output.write(piece);
        all += piece;
        EXPECT_EQ(unpackedOf(packed), all + " (cut)");
    }
    output.finish();
    EXPECT_EQ(unpackedOf(packed), all);
}

TEST_F(GzipOutputTest, PacksTheSameAlikeEveryTime) {
    for (int time = 0; time < 2; ++time) {
        GzipOutput output(out, false);
        output.write("the same");
        output.finish();
    }
    EXPECT_EQ(packed.substr(0, packed.size() / 2), packed.substr(packed.size() / 2));
}

}  // namespace
}  // namespace nearcast::cli
