// SPDX-License-Identifier: Apache-2.0
#include "platform/CBUUID.h"

#include <algorithm>

namespace nearcast {

namespace {

// 00000000-0000-1000-8000-00805F9B34FB: Core Specification, Volume 3, Part B, 2.5.1.
constexpr CBUUID::Bytes baseUUID{0, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0x80, 0x5F, 0x9B, 0x34, 0xFB};

std::optional<std::uint8_t> digit(char letter) {
    if (letter >= '0' && letter <= '9') return static_cast<std::uint8_t>(letter - '0');
    if (letter >= 'a' && letter <= 'f') return static_cast<std::uint8_t>(letter - 'a' + 10);
    if (letter >= 'A' && letter <= 'F') return static_cast<std::uint8_t>(letter - 'A' + 10);
    return std::nullopt;
}

bool isDash(std::size_t place) { return place == 8 || place == 13 || place == 18 || place == 23; }

/// The digits of a 128-bit UUID in its text form of 36 characters.
std::optional<CBUUID::Bytes> longForm(std::string_view text) {
    CBUUID::Bytes bytes{};
    std::size_t digits = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (isDash(place)) {
            if (text[place] != '-') return std::nullopt;
            continue;
        }
        const auto value = digit(text[place]);
        if (!value) return std::nullopt;
        auto& byte = bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | *value);
    }
    return bytes;
}

CBUUID::Bytes completed(std::uint32_t value) {
    CBUUID::Bytes bytes = baseUUID;
    for (int octet = 0; octet < 4; ++octet) {
        bytes[static_cast<std::size_t>(octet)] = static_cast<std::uint8_t>(value >> (24 - 8 * octet));
    }
    return bytes;
}

std::optional<CBUUID::Bytes> shortForm(std::string_view text) {
    std::uint32_t value = 0;
    for (const char letter : text) {
        const auto next = digit(letter);
        if (!next) return std::nullopt;
        value = value << 4 | *next;
    }
    return completed(value);
}

std::optional<CBUUID::Bytes> parse(std::string_view text) {
    if (text.size() == 36) return longForm(text);
    if (text.size() == 4 || text.size() == 8) return shortForm(text);
    return std::nullopt;
}

std::string canonical(const CBUUID::Bytes& bytes) {
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        if (isDash(text.size())) text.push_back('-');
        text.push_back(hexadecimal[byte >> 4]);
        text.push_back(hexadecimal[byte & 15]);
    }
    return text;
}

}  // namespace

CBUUID CBUUID::UUIDWithString(std::string_view text) {
    CBUUID result;
    result.text_ = text;
    result.bytes_ = parse(text);
    if (result.bytes_) return result;
    result.folded_ = text;
    std::transform(text.begin(), text.end(), result.folded_.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return result;
}

CBUUID CBUUID::UUIDWithBytes(const Bytes& bytes) {
    CBUUID result;
    result.text_ = canonical(bytes);
    result.bytes_ = bytes;
    return result;
}

CBUUID CBUUID::UUIDWithShort(std::uint32_t value) {
    CBUUID result = UUIDWithBytes(completed(value));
    result.text_ = value <= 0xFFFF ? result.text_.substr(4, 4) : result.text_.substr(0, 8);
    return result;
}

CBUUID CBUUID::shortest() const {
    if (!bytes_) return *this;
    constexpr std::size_t shortOctets = 4;
    if (!std::equal(bytes_->begin() + shortOctets, bytes_->end(), baseUUID.begin() + shortOctets)) {
        return UUIDWithBytes(*bytes_);
    }
    std::uint32_t value = 0;
    for (std::size_t octet = 0; octet < shortOctets; ++octet) value = value << 8 | (*bytes_)[octet];
    return UUIDWithShort(value);
}

}  // namespace nearcast
