// SPDX-License-Identifier: Apache-2.0
#include "support/Utf8.h"

#include <cstdint>

namespace nearcast {

namespace {

/// What may follow a first octet: RFC 3629, section 4.
struct Sequence {
    std::size_t length;
    std::uint8_t secondFrom;
    std::uint8_t secondTo;
};

Sequence sequenceOf(std::uint8_t first) {
    if (first >= 0xC2 && first <= 0xDF) return {2, 0x80, 0xBF};
    if (first == 0xE0) return {3, 0xA0, 0xBF};
    if (first == 0xED) return {3, 0x80, 0x9F};
    if (first >= 0xE1 && first <= 0xEF) return {3, 0x80, 0xBF};
    if (first == 0xF0) return {4, 0x90, 0xBF};
    if (first >= 0xF1 && first <= 0xF3) return {4, 0x80, 0xBF};
    if (first == 0xF4) return {4, 0x80, 0x8F};
    return {1, 0, 0};
}

/// The octets of the first `count` characters.
std::size_t lengthOf(std::string_view text, std::size_t count) noexcept {
    std::size_t length = 0;
    for (; count > 0 && length < text.size(); --count) length += characterLength(text.substr(length));
    return length;
}

}  // namespace

std::size_t characterLength(std::string_view text) noexcept {
    const auto octet = [&](std::size_t place) { return static_cast<std::uint8_t>(text[place]); };
    const Sequence sequence = sequenceOf(octet(0));
    if (sequence.length > text.size()) return 1;
    if (sequence.length > 1 && (octet(1) < sequence.secondFrom || octet(1) > sequence.secondTo)) return 1;
    for (std::size_t place = 2; place < sequence.length; ++place) {
        if ((octet(place) & 0xC0) != 0x80) return 1;
    }
    return sequence.length;
}

std::string_view characters(std::string_view text, std::size_t first, std::size_t count) noexcept {
    text.remove_prefix(lengthOf(text, first));
    return text.substr(0, lengthOf(text, count));
}

bool hasCharacters(std::string_view text, std::size_t count) noexcept {
    while (count > 0 && !text.empty()) {
        text.remove_prefix(characterLength(text));
        --count;
    }
    return count == 0;
}

std::string wellFormed(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const bool lone = length == 1 && (static_cast<unsigned char>(text[0]) & 0x80) != 0;
        result += lone ? std::string_view("\xEF\xBF\xBD") : text.substr(0, length);
        text.remove_prefix(length);
    }
    return result;
}

}  // namespace nearcast
