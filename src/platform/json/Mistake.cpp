// SPDX-License-Identifier: Apache-2.0
#include "platform/json/Mistake.h"

#include "support/Utf8.h"

#include <algorithm>
#include <string>

namespace nearcast {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view blank = " \t\r\n";

/// The place behind what is there, and not behind the line feeds that end it.
JSONProblem brokenOff(std::string_view data) {
    const auto last = data.find_last_not_of(blank);
    if (last == std::string_view::npos || data.substr(0, last + 1) == byteOrderMark) return {0, "there is no text"};
    return {last + 1, "it breaks off here"};
}

/// The first octet that begins no character, up to a place; that behind it where all do.
std::size_t notUTF8(std::string_view data, std::size_t last) {
    std::size_t place = 0;
    while (place <= last) {
        const std::size_t length = characterLength(data.substr(place));
        if (length == 1 && static_cast<unsigned char>(data[place]) >= 0x80) break;
        place += length;
    }
    return place;
}

JSONProblem unexpected(std::string_view data, std::size_t place) {
    return {place, "'" + std::string(characters(data.substr(place), 0, 1)) + "' is not expected here"};
}

}  // namespace

JSONProblem mistakeAt(std::string_view data, const LastRead& read) {
    if (read.last >= data.size()) return brokenOff(data);
    if (const std::size_t place = notUTF8(data, read.last); place <= read.last) {
        return {place, "what stands here is not UTF-8"};
    }
    const bool whole = read.kind != LastRead::Kind::fragment;
    const std::size_t place = whole ? read.last + 1 - std::min(read.length, read.last + 1) : read.last;
    if (read.complete) return {place, "nothing may follow the value"};
    if (read.kind == LastRead::Kind::number) return {place, "the number is too large"};
    if (data[place] == '\n' || data[place] == '\r') return {place, "a text is not closed before its line ends"};
    if (static_cast<unsigned char>(data[place]) < ' ') return {place, "a control character has to be an escape"};
    return unexpected(data, place);
}

JSONProblem tooDeep(std::string_view data, int depth) {
    int open = 0;
    bool inText = false;
    std::size_t place = 0;
    for (; place < data.size() && open <= depth; ++place) {
        const char sign = data[place];
        if (inText && sign == '\\') ++place;
        if (sign == '"') inText = !inText;
        if (inText) continue;
        if (sign == '[' || sign == '{') ++open;
        if (sign == ']' || sign == '}') --open;
    }
    return {place - 1, "objects and lists lie deeper than " + std::to_string(depth) + " levels"};
}

JSONPlace placeOf(std::string_view data, std::size_t offset) {
    std::string_view before = data.substr(0, std::min(offset, data.size()));
    if (before.starts_with(byteOrderMark)) before.remove_prefix(byteOrderMark.size());
    JSONPlace place;
    place.line += static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
    before.remove_prefix(before.rfind('\n') + 1);  // which is the whole where there is none
    for (; !before.empty(); before.remove_prefix(characterLength(before))) ++place.column;
    return place;
}

std::string notJSON(const JSONPlace& place, std::string_view why) {
    return "not JSON at line " + std::to_string(place.line) + ", column " + std::to_string(place.column) + ": " +
           std::string(why);
}

}  // namespace nearcast
