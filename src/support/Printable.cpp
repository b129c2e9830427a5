// SPDX-License-Identifier: Apache-2.0
#include "support/Printable.h"

#include "support/Characters.h"
#include "support/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace nearcast {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Takes the first character off a text.
std::string_view takeCharacter(std::string_view& text) {
    const std::string_view character = text.substr(0, characterLength(text));
    text.remove_prefix(character.size());
    return character;
}

/// The character's number; nothing for an octet that is no UTF-8.
std::optional<char32_t> codePointOf(std::string_view character) {
    const auto octet = [&](std::size_t place) { return static_cast<std::uint8_t>(character[place]); };
    if (character.size() == 1) return octet(0) < 0x80 ? std::optional<char32_t>(octet(0)) : std::nullopt;
    char32_t point = octet(0) & (0x7FU >> character.size());
    for (std::size_t place = 1; place < character.size(); ++place) point = point << 6U | (octet(place) & 0x3FU);
    return point;
}

bool isDrawn(std::string_view character) {
    const auto point = codePointOf(character);
    return point && !steersTerminal(*point);
}

void appendUnit(std::string& out, std::uint32_t unit) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) out.push_back(digits[unit >> shift & 15U]);
}

/// As JSON writes a character that does not stand for itself: in one unit of UTF-16, or in two.
void appendEscape(std::string& out, char32_t point) {
    if (point < 0x10000) return appendUnit(out, point);
    appendUnit(out, 0xD800 + ((point - 0x10000) >> 10U));
    appendUnit(out, 0xDC00 + ((point - 0x10000) & 0x3FFU));
}

std::size_t columnsOf(std::string_view character) {
    const auto point = codePointOf(character);
    return point ? terminalColumns(*point) : 1;
}

}  // namespace

bool isPrintable(std::string_view text) noexcept {
    const auto other = std::find_if(text.begin(), text.end(), [](char octet) { return octet < ' ' || octet > '~'; });
    text.remove_prefix(static_cast<std::size_t>(other - text.begin()));
    while (!text.empty()) {
        if (!isDrawn(takeCharacter(text))) return false;
    }
    return true;
}

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::string_view character = takeCharacter(text);
        result += isDrawn(character) ? character : replacement;
    }
    return result;
}

std::string printableJSON(std::string_view json) {
    std::string result;
    result.reserve(json.size());
    while (!json.empty()) {
        const std::string_view character = takeCharacter(json);
        const auto point = codePointOf(character);
        if (point && *point >= 0x7F && steersTerminal(*point)) {
            appendEscape(result, *point);
        } else {
            result += character;
        }
    }
    return result;
}

std::size_t widthOf(std::string_view text) noexcept {
    std::size_t width = 0;
    while (!text.empty()) width += columnsOf(takeCharacter(text));
    return width;
}

}  // namespace nearcast
