// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingReader.h"

#include "unit/platform/files/GzipBytes.h"
#include "unit/platform/replay/CaptureBytes.h"
#include "unit/platform/replay/SnifferBytes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <system_error>

namespace nearcast::replay {

namespace {

const Octets packet = H4(legacyEvent({{.address = alice, .data = hex("02 01 06")}}));
const std::string line = R"({"at": 1.0, "do": "advertise", "name": null, "manufacturerData": null, "RSSI": -60})";

struct Example {
    const char* format;
    Octets head;
    Octets record;  ///< carries one report; any number of them may follow the head

    /// Whether a file cut within its head is a whole one: in pcapng a line feed alone, which is no sign of it, and a
    /// section without interfaces.
    [[nodiscard]] bool endsCleanlyAt(std::size_t length) const {
        const bool pcapng = !head.empty() && head[0] == '\n';
        return pcapng && (length == 1 || length == 28);
    }
};

std::vector<Example> examples() {
    const Pcapng little{Order::little};
    const Pcapng big{Order::big};
    const Octets sniffed = Info{}.before(legacyPDU(ADV_IND, alice, hex("020106")));
    return {
        {"JSON Lines", {}, octetsOf(line + "\n")},
        {"btsnoop", btsnoopHeader(1002), btsnoopRecord(0, packet)},
        {"pcap", pcapHeader(187), pcapRecord(0, 0, packet)},
        {"pcap, big endian", pcapHeader(187, Order::big), pcapRecord(0, 0, packet, Order::big)},
        {"pcap of a sniffer", pcapHeader(256), pcapRecord(0, 0, sniffed)},
        {"pcapng", little.section() + little.interface(187), little.enhanced(0, packet)},
        {"pcapng, big endian", big.section() + big.interface(187), big.obsolete(0, packet)},
    };
}

TEST(RecordingReader, TellsFormatsByTheirContent) {
    for (const Example& one : examples()) {
        const Contents contents = readAll(one.head + one.record + one.record);
        EXPECT_FALSE(contents.damagedAt) << one.format << " " << contents.damage;
        EXPECT_EQ(contents.reports().size(), 2U) << one.format;
    }
}

TEST(RecordingReader, ReadsTheSameHoweverTheBytesCome) {
    for (const Example& one : examples()) {
        for (const std::size_t step : {1U, 7U, 64U}) {
            EXPECT_EQ(readAll(one.head + one.record + one.record, step).reports().size(), 2U) << one.format;
        }
    }
}

TEST(RecordingReader, PlaysAFileCutAnywhereUpToTheCut) {
    for (const Example& one : examples()) {
        const Octets file = one.head + one.record + one.record;
        for (std::size_t length = 1; length < file.size(); ++length) {
            const Octets cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
            const Contents contents = readAll(cut);
            const std::size_t body = length < one.head.size() ? 0 : length - one.head.size();
            const bool clean = length >= one.head.size() && body % one.record.size() == 0;
            const bool lineEnd = one.head.empty() && (body + 1) % one.record.size() == 0;  // it may be missing
            EXPECT_EQ(contents.reports().size(), (body + (lineEnd ? 1 : 0)) / one.record.size())
                << one.format << " " << length;
            EXPECT_EQ(contents.damagedAt.has_value(), !clean && !lineEnd && !one.endsCleanlyAt(length))
                << one.format << " " << length;
        }
    }
}

TEST(RecordingReader, NamesThePlaceWhereTheRecordBeginsThatIsNotWhole) {
    for (const Example& one : examples()) {
        const Octets good = one.head + one.record;
        const Octets half(one.record.begin(), one.record.begin() + 10);
        const Contents contents = readAll(good + half);
        EXPECT_EQ(contents.damagedAt, good.size()) << one.format;
        EXPECT_EQ(contents.damage.rfind("damaged at byte " + std::to_string(good.size()) + ": ", 0), 0U);
    }
}

TEST(RecordingReader, TellsDamageOnceAndNothingAfterIt) {
    for (const Example& one : examples()) {
        Octets file = one.head + one.record;
        file.pop_back();
        file.pop_back();
        for (const std::size_t length : {file.size(), std::size_t{4}}) {
            const auto reader =
                openRecording(sourceOf({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)}), "test");
            EXPECT_THROW(reader->next(), RecordingDamage) << one.format;
            EXPECT_FALSE(reader->next()) << one.format;
            EXPECT_FALSE(reader->next()) << one.format;
        }
    }
}

/// The file packed, cut before its end, with this many bytes of it missing.
Octets packedAndCut(const Octets& file, std::size_t missing) {
    const std::string packed = gzipped({reinterpret_cast<const char*>(file.data()), file.size()});
    return octetsOf(std::string_view(packed).substr(0, packed.size() - missing));
}

TEST(RecordingReader, UnpacksEveryFormat) {
    for (const Example& one : examples()) {
        const Octets file = one.head + one.record + one.record;
        const Contents contents = readAll(packedAndCut(file, 0), 1);
        EXPECT_EQ(contents.reports().size(), readAll(file).reports().size()) << one.format;
        EXPECT_EQ(contents.damage, "") << one.format;
    }
}

TEST(RecordingReader, OfAPackedFileThatIsCutAllBeforeTheCutCounts) {
    for (const Example& one : examples()) {
        const Octets whole = one.head + one.record;
        for (const Octets& more : {Octets{}, Octets(one.record.begin(), one.record.end() - 3)}) {
            const Contents contents = readAll(packedAndCut(whole + more, 4));
            EXPECT_EQ(contents.reports().size(), readAll(whole).reports().size()) << one.format;
            EXPECT_EQ(contents.damage,
                      "damaged at byte " + std::to_string(whole.size()) + ": the gzip data end before their end")
                << one.format;
        }
    }
}

TEST(RecordingReader, OfAPackedFileThatIsCutAtItsBeginTellsThat) {
    const Contents contents = readAll(hex("1F8B"));
    EXPECT_TRUE(contents.items.empty());
    EXPECT_EQ(contents.damage, "damaged at byte 0: the gzip data end before their end");
}

TEST(RecordingReader, NeedsNoMoreThanALineToGiveIt) {
    const std::string text = std::string(line) + "\n";
    int asked = 0;
    const auto reader = openRecording(
        [&](std::span<std::uint8_t> room) -> std::size_t {
            if (++asked > 1) throw std::logic_error("it waits for more");
            std::copy(text.begin(), text.end(), room.begin());
            return text.size();
        },
        "test");
    EXPECT_TRUE(reader->next());
}

TEST(RecordingReader, HoldsNothingInAnEmptyFile) {
    for (const char* text : {"", "\n", " \t\r\n\n"}) {
        const Contents contents = readAll(octetsOf(text));
        EXPECT_TRUE(contents.items.empty());
        EXPECT_FALSE(contents.damagedAt);
    }
}

TEST(RecordingReader, RefusesOtherFormats) {
    for (const char* text :
         {"hello", "<xml>", "[1]", "btsnoops!", "\xD4\xC3\xB2\xA0....", "\x0A\x0D\x0D\x0B....", "\xEF\xBB\xBFx"}) {
        try {
            openRecording(sourceOf(octetsOf(text)), "some.file");
            ADD_FAILURE() << text;
        } catch (const NoRecording& error) {
            EXPECT_STREQ(error.what(), "some.file: no recording (neither JSON Lines nor btsnoop, pcap or pcapng)");
        }
    }
}

TEST(RecordingReader, NamesAFileThatCannotBeRead) {
    for (const std::string& path : {std::string("/nowhere/to/be.found"), ::testing::TempDir()}) {
        try {
            openRecording(path);
            ADD_FAILURE() << path;
        } catch (const std::system_error& error) {
            EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        }
    }
}

TEST(RecordingReader, ReadsFiles) {
    const std::string path = ::testing::TempDir() + "RecordingReader_ReadsFiles.jsonl";
    std::ofstream(path) << line << "\n" << line << "\n";
    const auto reader = openRecording(path);
    EXPECT_EQ(readAll(*reader).reports().size(), 2U);
    std::remove(path.c_str());
}

TEST(RecordingReader, TakesAFailureOfTheDiskForDamage) {
    Octets file = btsnoopHeader(1002);
    while (file.size() < 5'000) file = file + btsnoopRecord(0, packet);
    bool given = false;
    const auto reader = openRecording(
        [&](std::span<std::uint8_t> room) -> std::size_t {
            if (given) throw std::system_error(EIO, std::generic_category());
            given = true;
            std::copy(file.begin(), file.end(), room.begin());
            return file.size();
        },
        "test");
    const Contents contents = readAll(*reader);
    EXPECT_EQ(contents.items.size(), (file.size() - 16) / btsnoopRecord(0, packet).size());
    EXPECT_EQ(contents.damage, "damaged at byte " + std::to_string(file.size()) + ": Input/output error");
    EXPECT_FALSE(reader->next());
}

}  // namespace

}  // namespace nearcast::replay
