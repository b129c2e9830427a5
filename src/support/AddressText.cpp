// SPDX-License-Identifier: Apache-2.0
#include "support/AddressText.h"

#include <algorithm>
#include <exception>
#include <random>

namespace nearcast {

namespace {

/// Every octet as its two digits, a colon behind them, and a zero that makes it four bytes to be stored at once.
constexpr auto digits = [] {
    constexpr std::string_view values = "0123456789ABCDEF";
    std::array<std::array<char, 4>, 256> all{};
    for (std::size_t octet = 0; octet < all.size(); ++octet) all[octet] = {values[octet >> 4], values[octet & 15], ':'};
    return all;
}();

constexpr unsigned noDigit = 16;

constexpr unsigned digitValue(char letter) noexcept {
    if (letter >= '0' && letter <= '9') return static_cast<unsigned>(letter - '0');
    if (letter >= 'A' && letter <= 'F') return static_cast<unsigned>(letter - 'A') + 10;
    return noDigit;
}

}  // namespace

void AddressText::assign(PackedAddress address) noexcept {
    for (std::size_t octet = 0; octet < octets; ++octet) {
        const auto& three = digits[(address >> (8 * (octets - 1 - octet))) & 0xFF];
        std::copy(three.begin(), three.end(), text_.begin() + octet * 3);  // the fourth is written over by the next
    }
}

PackedAddress packedAddress(std::string_view text) noexcept {
    if (text.size() != AddressText::length) return noAddress;
    PackedAddress address = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (place % 3 == 2) {
            if (text[place] != ':') return noAddress;
            continue;
        }
        const unsigned digit = digitValue(text[place]);
        if (digit == noDigit) return noAddress;
        address = address << 4 | digit;
    }
    return address;
}

std::uint64_t hashFactor(std::uint64_t wanted) noexcept {
    static const std::uint64_t factor = [wanted] {
        if (wanted != 0) return wanted | 1U;
        std::uint64_t chance = 0;
        try {
            std::random_device device;
            chance = std::uint64_t{device()} << 32 | device();
        } catch (const std::exception&) {
            chance = reinterpret_cast<std::uintptr_t>(&chance);  // a system without: where its stack lies
        }
        return chance | 1U;
    }();
    return factor;
}

}  // namespace nearcast
