// SPDX-License-Identifier: Apache-2.0
#include "platform/files/ByteSource.h"
#include "unit/platform/files/GzipBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast {
namespace {

/// Gives bytes in pieces of `step`.
ByteSource sourceOf(std::string bytes, std::size_t step = SIZE_MAX) {
    return [bytes = std::move(bytes), step, place = std::size_t{0}](std::span<std::uint8_t> room) mutable {
        const std::size_t count = std::min({room.size(), step, bytes.size() - place});
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(place), count, room.begin());
        place += count;
        return count;
    };
}

struct Unpacked {
    std::string bytes;
    std::string damage;
};

Unpacked readAll(ByteSource source, std::size_t room = 65536) {
    const ByteSource unpacking = unpacked(std::move(source), "input");
    Unpacked result;
    std::vector<std::uint8_t> some(room);
    try {
        while (const std::size_t count = unpacking(some)) {
            result.bytes.append(some.begin(), some.begin() + static_cast<std::ptrdiff_t>(count));
        }
    } catch (const PackedDamage& damage) {
        result.damage = damage.what();
        EXPECT_EQ(unpacking(some), 0U) << "nothing comes after the damage";
    }
    return result;
}

/// Text that packs well, and does not fit into what is read at once.
std::string longText() {
    std::string text;
    for (int line = 0; text.size() < 300'000; ++line) text += "line " + std::to_string(line * 7919) + "\n";
    return text;
}

TEST(Unpacker, LetsOtherBytesPassAsTheyAre) {
    for (const std::string& bytes : {std::string(), std::string("{"), std::string("\x1F"), std::string("\x1Fx\x8B"),
                                     std::string("\x8B\x1F"), longText()}) {
        for (const std::size_t step : {std::size_t{1}, SIZE_MAX})
            EXPECT_EQ(readAll(sourceOf(bytes, step)).bytes, bytes);
    }
}

TEST(Unpacker, UnpacksHoweverTheBytesComeAndAreTaken) {
    const std::string text = longText();
    for (const std::size_t step : {std::size_t{1}, std::size_t{7}, SIZE_MAX}) {
        for (const std::size_t room : {std::size_t{1}, std::size_t{1000}, std::size_t{1} << 20}) {
            const Unpacked result = readAll(sourceOf(gzipped(text), step), room);
            EXPECT_EQ(result.bytes, text) << step << " " << room;
            EXPECT_EQ(result.damage, "");
        }
    }
}

TEST(Unpacker, UnpacksNothing) {
    const Unpacked result = readAll(sourceOf(gzipped("")));
    EXPECT_EQ(result.bytes + result.damage, "");
}

TEST(Unpacker, ReadsSeveralMembersAsOne) {
    for (const std::size_t step : {std::size_t{1}, SIZE_MAX}) {
        const Unpacked result = readAll(sourceOf(gzipped("one ") + gzipped("") + gzipped("two"), step));
        EXPECT_EQ(result.bytes, "one two");
        EXPECT_EQ(result.damage, "");
    }
}

TEST(Unpacker, PassesOverZerosBehindTheData) {
    const std::string zeros(100'000, '\0');
    EXPECT_EQ(readAll(sourceOf(gzipped("one ") + zeros + gzipped("two") + zeros)).bytes, "one two");
}

TEST(Unpacker, SaysThatSomethingElseFollows) {
    const Unpacked result = readAll(sourceOf(gzipped("one") + "two"));
    EXPECT_EQ(result.bytes, "one");
    EXPECT_EQ(result.damage, "what follows the gzip data is no gzip");
}

TEST(Unpacker, GivesWhatStandsBeforeACutAndSaysSo) {
    const std::string text = longText();
    const std::string packed = gzipped(text);
    std::size_t before = 0;
    for (const std::size_t length :
         {std::size_t{2}, std::size_t{9}, packed.size() / 2, packed.size() - 9, packed.size() - 8, packed.size() - 1}) {
        const Unpacked result = readAll(sourceOf(packed.substr(0, length)));
        EXPECT_EQ(result.damage, "the gzip data end before their end") << length;
        EXPECT_EQ(result.bytes, text.substr(0, result.bytes.size()));
        EXPECT_GE(result.bytes.size(), before);
        before = result.bytes.size();
    }
    EXPECT_EQ(before, text.size()) << "of a cut in what ends the data, all of it";
    EXPECT_EQ(readAll(sourceOf(packed + packed.substr(0, 1))).damage, "the gzip data end before their end");
}

TEST(Unpacker, GivesWhatStandsBeforeDamageAndSaysSo) {
    std::string packed = gzipped("some text");
    packed[packed.size() - 8] ^= 1;  // the checksum
    const Unpacked result = readAll(sourceOf(packed));
    EXPECT_EQ(result.bytes, "some text");
    EXPECT_EQ(result.damage, "the gzip data are damaged: incorrect data check");
    EXPECT_NE(readAll(sourceOf("\x1F\x8B no gzip at all")).damage, "");
}

TEST(Unpacker, RefusesWhatIsPackedTwice) {
    for (const std::size_t room : {std::size_t{1}, std::size_t{65536}}) {
        try {
            readAll(sourceOf(gzipped(gzipped("text"))), room);
            FAIL() << "it was unpacked";
        } catch (const std::invalid_argument& problem) {
            EXPECT_STREQ(problem.what(), "input: is packed by gzip more than once; unpack it first");
        }
    }
}

TEST(Unpacker, TakesGzipInsideOtherBytesAsTheyAre) {
    const std::string inner = "x" + gzipped("text");
    EXPECT_EQ(readAll(sourceOf(gzipped(inner))).bytes, inner);
}

TEST(Unpacker, AsksForNoMoreThanWhatGivesSomething) {
    const std::string packed = gzipped("text");
    int asked = 0;
    const ByteSource source = [&](std::span<std::uint8_t> room) {
        if (++asked > 1) throw std::runtime_error("it was asked again");
        std::copy(packed.begin(), packed.end() - 8, room.begin());
        return packed.size() - 8;
    };
    const ByteSource unpacking = unpacked(source, "input");
    std::vector<std::uint8_t> room(100);
    EXPECT_EQ(unpacking(room), 4U) << "what has come is given, though the end has not";
}

TEST(Unpacker, LetsErrorsOfItsSourcePass) {
    const ByteSource failing = [](std::span<std::uint8_t>) -> std::size_t {
        throw std::system_error(EIO, std::generic_category(), "input");
    };
    EXPECT_THROW(readAll(failing), std::system_error);
}

}  // namespace
}  // namespace nearcast
