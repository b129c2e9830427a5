// SPDX-License-Identifier: Apache-2.0
#include "lines/TextReader.h"

#include "doubles/TemporaryFolder.h"
#include "unit/platform/files/GzipBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::lines {
namespace {

/// Hands a text out, `step` bytes at a time.
TextReader::Source sourceOf(std::string text, std::size_t step) {
    return [text = std::move(text), step, place = std::size_t{0}](std::span<std::uint8_t> room) mutable {
        const std::size_t count = std::min({room.size(), step, text.size() - place});
        std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(place), count, room.begin());
        place += count;
        return count;
    };
}

struct Seen {
    std::string text;
    std::uint64_t number;
    std::uint64_t offset;
    friend bool operator==(const Seen&, const Seen&) = default;
    friend void PrintTo(const Seen& seen, std::ostream* out) {
        *out << seen.number << " at " << seen.offset << ": " << seen.text;
    }
};

std::vector<Seen> allOf(TextReader& reader) {
    std::vector<Seen> all;
    while (const auto text = reader.next()) all.push_back({std::string(*text), reader.number(), reader.offset()});
    return all;
}

TEST(TextReader, GivesLinesWithTheirNumbersAndOffsetsHoweverTheBytesCome) {
    for (const std::size_t step : {1U, 2U, 100U}) {
        TextReader reader({{"a", sourceOf("one\n\ntwo\r\n \t\nthree", step)}}, 10);
        EXPECT_EQ(allOf(reader), (std::vector<Seen>{{"one", 1, 0}, {"two\r", 3, 5}, {"three", 5, 13}})) << step;
    }
}

TEST(TextReader, EndsALineWithItsInputAndCountsAnewInTheNext) {
    TextReader reader({{"a", sourceOf("one", 1)}, {"b", sourceOf("", 1)}, {"c", sourceOf("\ntwo\n", 1)}}, 10);
    EXPECT_EQ(allOf(reader), (std::vector<Seen>{{"one", 1, 0}, {"two", 2, 1}}));
}

TEST(TextReader, NamesThePlaceOfTheLine) {
    TextReader reader({{"a", sourceOf("", 1)}, {"b", sourceOf("\ntwo", 1)}}, 10);
    reader.next();
    EXPECT_EQ(reader.place(), "b:2");
}

TEST(TextReader, UnpacksFilesAndSaysWhatIsWrongWithThem) {
    const TemporaryFolder folder;
    const std::string packed = gzipped("one\ntwo");
    TextReader good(TextReader::openFiles({folder.write("good", packed)}), 10);
    EXPECT_EQ(allOf(good), (std::vector<Seen>{{"one", 1, 0}, {"two", 2, 4}}));
    const std::string cut = folder.write("cut", packed.substr(0, packed.size() - 1));
    const std::string twice = folder.write("twice", gzipped(packed));
    for (const auto& [path, problem] : {std::pair(cut, ": the gzip data end before their end"),
                                        std::pair(twice, ": is packed by gzip more than once; unpack it first")}) {
        TextReader reader(TextReader::openFiles({path}), 10);
        try {
            allOf(reader);
            FAIL() << "it was read";
        } catch (const InputError& error) {
            EXPECT_EQ(error.what(), path + problem);
        }
    }
}

TEST(TextReader, KnowsWhetherALineHasItsEnd) {
    TextReader reader({{"a", sourceOf("one\ntwo", 1)}}, 10);
    reader.next();
    EXPECT_TRUE(reader.ended());
    reader.next();
    EXPECT_FALSE(reader.ended());
}

TEST(TextReader, KeepsAZeroByteInALine) {
    TextReader reader({{"a", sourceOf(std::string("o\0e\n", 4), 1)}}, 10);
    EXPECT_EQ(reader.next(), std::string_view("o\0e", 3));
}

TEST(TextReader, RefusesALineThatIsTooLongAndSaysWhereItIs) {
    for (const std::size_t step : {1U, 100U}) {
        TextReader fits({{"a", sourceOf("12345\n12345", step)}}, 5);
        EXPECT_EQ(allOf(fits).size(), 2U);
        TextReader tooLong({{"a", sourceOf("1\n123456\n", step)}}, 5);
        tooLong.next();
        EXPECT_THROW(tooLong.next(), LineTooLong);
        EXPECT_EQ(tooLong.place(), "a:2");
        EXPECT_EQ(tooLong.offset(), 2U);
    }
}

TEST(TextReader, DoesNotReadToTheEndOfALineThatIsTooLong) {
    TextReader endless({{"a",
                         [](std::span<std::uint8_t> room) {
                             std::fill(room.begin(), room.end(), 'x');
                             return room.size();
                         }}},
                       1'000'000);
    EXPECT_THROW(endless.next(), LineTooLong);
}

TEST(TextReader, SaysWhereTheLineStartsThatItsSourceCannotRead) {
    auto readable = sourceOf("one\ntw", 100);
    TextReader reader({{"a",
                        [&](std::span<std::uint8_t> room) {
                            const std::size_t count = readable(room);
                            if (count == 0) throw InputError("the disk is gone");
                            return count;
                        }}},
                      10);
    EXPECT_EQ(reader.next(), "one");
    EXPECT_THROW(reader.next(), InputError);
    EXPECT_EQ(reader.offset(), 4U);
}

TEST(TextReader, OpensAllFilesBeforeItReadsAny) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good", "one\n");
    TextReader reader(TextReader::openFiles({good, good}), 10);
    EXPECT_EQ(allOf(reader).size(), 2U);
    EXPECT_THROW(TextReader::openFiles({good, folder.file("missing")}), std::system_error);
}

}  // namespace
}  // namespace nearcast::lines
