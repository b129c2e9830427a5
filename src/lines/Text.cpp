// SPDX-License-Identifier: Apache-2.0
#include "lines/Text.h"

#include "platform/json/JSONSerialization.h"

#include <array>
#include <charconv>

namespace nearcast::lines {

void appendSeconds(std::string& out, Time time) {
    std::uint64_t micros = static_cast<std::uint64_t>(time.count());
    if (time.count() < 0) {
        out.push_back('-');
        micros = 0 - micros;
    }
    std::array<char, 24> digits{};
    const auto whole = std::to_chars(digits.data(), digits.data() + digits.size(), micros / 1'000'000);
    out.append(digits.data(), whole.ptr);
    // With a one in front the zeros after the point are kept.
    std::to_chars(digits.data(), digits.data() + digits.size(), 1'000'000 + micros % 1'000'000);
    digits[0] = '.';
    std::size_t length = 7;
    while (length > 2 && digits[length - 1] == '0') --length;
    out.append(digits.data(), length);
}

void appendHexadecimal(std::string& out, std::span<const std::uint8_t> octets) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    out.push_back('"');
    for (const std::uint8_t octet : octets) {
        out.push_back(digits[octet >> 4]);
        out.push_back(digits[octet & 15]);
    }
    out.push_back('"');
}

void appendList(std::string& out, const std::vector<std::string>& texts) {
    out.push_back('[');
    for (std::size_t index = 0; index < texts.size(); ++index) {
        if (index != 0) out += ", ";
        appendQuoted(out, texts[index]);
    }
    out.push_back(']');
}

}  // namespace nearcast::lines
