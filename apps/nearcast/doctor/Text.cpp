// SPDX-License-Identifier: Apache-2.0
#include "doctor/Text.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace nearcast::cli {

std::string addressText(std::span<const std::uint8_t> octets) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t octet : octets) {
        if (!text.empty()) text.push_back(':');
        text.push_back(digits[octet >> 4]);
        text.push_back(digits[octet & 15]);
    }
    return text;
}

std::string decimals(double value) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string counted(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace nearcast::cli
