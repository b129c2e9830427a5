// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Expect.h"
#include "lines/Line.h"
#include "lines/PlainLine.h"
#include "platform/replay/JsonLines.h"
#include "platform/replay/RecordingReader.h"
#include "platform/replay/RecordingWriter.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::fuzz {

using namespace replay;

/// The bytes as the source of a recording.
inline ByteSource sourceOf(std::span<const std::uint8_t> bytes) {
    return [rest = bytes](std::span<std::uint8_t> room) mutable {
        const std::size_t count = std::min(room.size(), rest.size());
        std::copy_n(rest.begin(), count, room.begin());
        rest = rest.subspan(count);
        return count;
    };
}

struct Lines {
    std::string text;
    ImportResult result;
    lines::Time farthest{0};  ///< from the start, either way
};

/// Beyond this a time that is read as a double does not name each microsecond any more.
inline constexpr lines::Time exactTimes = std::chrono::seconds(4'000'000'000);

/// What an import gives; nothing for what is no recording.
inline std::unique_ptr<Lines> imported(std::span<const std::uint8_t> bytes, const RecordingOptions& options) {
    std::unique_ptr<RecordingReader> reader;
    try {
        reader = openRecording(sourceOf(bytes), "input");
    } catch (const NoRecording&) {
        return nullptr;
    } catch (const std::invalid_argument&) {  // packed more than once
        return nullptr;
    }
    auto lines = std::make_unique<Lines>();
    lines->result = importRecording(*reader, "input", options, [&](std::string_view line) {
        lines->text.append(line).push_back('\n');
        const auto plain = lines::readPlainLine(line, {});
        const lines::Line parsed = lines::parseJSONLine(line, {});
        lines->farthest = std::max(lines->farthest, std::chrono::abs(parsed.at));
        expect(!plain || lines::writeLine(*plain) == lines::writeLine(parsed), "a plain line is the JSON it is");
    });
    expect(!reader->next(), "nothing comes after the end or the damage");
    return lines;
}

using MakeWriter = std::unique_ptr<RecordingWriter> (*)(RecordingWriter::Out out, std::chrono::microseconds begin);

/// Writes what a recording holds as a capture, and checks that it can be read again, item by item.
inline void checkWriting(std::span<const std::uint8_t> bytes, MakeWriter make) {
    const auto reader = openRecording(sourceOf(bytes), "input");
    std::string written;
    const auto writer = make([&](std::string_view some) { written += some; }, {});
    std::vector<std::size_t> kinds;
    while (const auto item = reader->next()) {
        kinds.push_back(item->index());
        writer->write(*item);
    }
    const auto* const text = reinterpret_cast<const std::uint8_t*>(written.data());
    const auto again = openRecording(sourceOf(std::span(text, written.size())), "written");
    for (const std::size_t kind : kinds) {
        const auto item = again->next();
        expect(item && item->index() == kind, "what was written is read again");
    }
    expect(!again->next(), "and nothing else");
}

/// Reads any bytes as a recording, and checks what has to hold for all of them.
inline void checkRecording(std::span<const std::uint8_t> bytes) {
    for (const bool asDongles : {false, true}) {
        const auto lines = imported(bytes, {.anyService = false, .asDongles = asDongles});
        if (!lines) return;
        expect(lines->result.malformed <= lines->result.reports, "malformed reports are reports");
        const auto* const text = reinterpret_cast<const std::uint8_t*>(lines->text.data());
        const auto again = imported(std::span(text, lines->text.size()), {});
        expect(again && !again->result.damage, "what was imported is a recording");
        if (lines->farthest > exactTimes) continue;
        expect(again->text == lines->text, "importing what was imported changes nothing");
        if (asDongles || lines->result.damage) continue;
        for (const MakeWriter make : {makeBtsnoopWriter, makePcapngWriter}) checkWriting(bytes, make);
    }
}

}  // namespace nearcast::fuzz
