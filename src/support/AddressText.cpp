// SPDX-License-Identifier: Apache-2.0
#include "support/AddressText.h"

namespace nearcast {

namespace {

/// The two digits of every octet.
constexpr auto digitPairs = [] {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t octet = 0; octet < pairs.size(); ++octet) pairs[octet] = {digits[octet >> 4], digits[octet & 15]};
    return pairs;
}();

constexpr unsigned noDigit = 16;

constexpr unsigned digitValue(char letter) noexcept {
    if (letter >= '0' && letter <= '9') return static_cast<unsigned>(letter - '0');
    if (letter >= 'A' && letter <= 'F') return static_cast<unsigned>(letter - 'A') + 10;
    return noDigit;
}

}  // namespace

AddressText::AddressText(PackedAddress address) noexcept {
    for (std::size_t octet = 0; octet < octets; ++octet) {
        const auto& pair = digitPairs[(address >> (8 * (octets - 1 - octet))) & 0xFF];
        text_[octet * 3] = pair[0];
        text_[octet * 3 + 1] = pair[1];
        text_[octet * 3 + 2] = ':';
    }
}

std::optional<PackedAddress> packedAddress(std::string_view text) noexcept {
    if (text.size() != AddressText::length) return std::nullopt;
    PackedAddress address = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (place % 3 == 2) {
            if (text[place] != ':') return std::nullopt;
            continue;
        }
        const unsigned digit = digitValue(text[place]);
        if (digit == noDigit) return std::nullopt;
        address = address << 4 | digit;
    }
    return address;
}

}  // namespace nearcast
