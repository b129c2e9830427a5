// SPDX-License-Identifier: Apache-2.0
// Any bytes as the lines of a scenario, which are read and not played: beside each other stand the reader of files and
// a plain walk from line feed to line feed.
#include "Expect.h"
#include "MemoryFile.h"
#include "lines/Line.h"
#include "lines/LineReader.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace nearcast::fuzz {

namespace {

using namespace lines;

/// Beyond this a time that is read as a double does not name each microsecond any more.
constexpr Time exactTimes = std::chrono::seconds(4'000'000'000);

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r") == std::string_view::npos; }

/// Of recordings, whose lines can be written.
bool isRecorded(const Action& action) {
    return std::holds_alternative<Advertise>(action) || std::holds_alternative<RadioState>(action) ||
           std::holds_alternative<End>(action);
}

void checkSame(const Line& line, const Line& expected) {
    expect(line.at == expected.at, "a line has its own time, or that of the line before it");
    expect(line.action.index() == expected.action.index(), "a line does what it says");
    expect(!nameOf(line.action).empty(), "what a line does has a name");
    if (!isRecorded(line.action)) return;
    const std::string written = writeLine(line);
    expect(written == writeLine(expected), "the short cut reads what JSON says");
    if (std::chrono::abs(line.at) > exactTimes) return;
    expect(writeLine(parseLine(written, {})) == written, "what is written is read again");
    expect(writeLine(parseJSONLine(written, {})) == written, "what is written is the JSON that it means");
}

/// The reader at a line that is wrong.
void checkRefused(LineReader& reader, const LineError& problem, Time previous) {
    expect(reader.peekTime() == problem.at.value_or(previous), "a wrong line has a time too");
    try {
        reader.next();
        expect(false, "a wrong line is refused");
    } catch (const InputError& error) {
        const std::string place = reader.place();
        const std::size_t colon = place.rfind(':');
        const std::string expected = problem.inFile(place.substr(0, colon), std::stoull(place.substr(colon + 1)));
        expect(error.what() == expected, "the message names the line");
    }
    expect(!reader.peekTime() && !reader.next(), "nothing follows a line that cannot be read");
}

/// What begins so is unpacked, which the fuzzer of recordings tries.
bool isPacked(std::span<const std::uint8_t> bytes) { return bytes.size() > 1 && bytes[0] == 0x1F && bytes[1] == 0x8B; }

void checkLines(std::span<const std::uint8_t> bytes) {
    if (isPacked(bytes)) return;
    const MemoryFile file(bytes);
    LineReader reader({file.path()});
    std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    Time previous{0};
    while (!rest.empty()) {
        const std::string_view text = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(text.size() + 1, rest.size()));
        if (isBlank(text)) continue;
        std::optional<Line> expected;
        try {
            expected = parseJSONLine(text, previous);
        } catch (const LineError& problem) {
            return checkRefused(reader, problem, previous);
        }
        previous = expected->at;
        expect(reader.peekTime() == previous, "the time is known before the line is taken");
        const auto line = reader.next();
        expect(line.has_value(), "no line is left out");
        checkSame(*line, *expected);
    }
    expect(!reader.peekTime() && !reader.next(), "no line comes from nowhere");
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkLines({data, size});
    return 0;
}
