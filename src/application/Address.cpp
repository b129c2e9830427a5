// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Address.h>

#include "support/AddressText.h"
#include "support/Dongle.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace nearcast {

namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view separators = ":-._ ";
constexpr std::size_t digits = AddressText::octets * 2;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isDigit(char letter) {
    return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'F') || (letter >= 'a' && letter <= 'f');
}

/// The digits of a text in groups of `length`, all joined by one separator; empty where it is not made so.
std::string joinedDigits(std::string_view text, std::size_t length) {
    std::string result;
    const std::size_t step = length + 1;
    if (text.size() + 1 != digits / length * step) return {};
    for (std::size_t place = 0; place < text.size(); ++place) {
        const bool separates = place % step == length;
        if (separates ? text[place] != text[length] : !isDigit(text[place])) return {};
        if (!separates) result.push_back(text[place]);
    }
    const bool known = length == digits || separators.find(text[length]) != std::string_view::npos;
    return known ? result : std::string();
}

std::string digitsOf(std::string_view text) {
    for (const std::size_t length : {std::size_t{2}, std::size_t{4}, digits}) {
        if (std::string found = joinedDigits(text, length); !found.empty()) return found;
    }
    return {};
}

}  // namespace

std::optional<Address> Address::parse(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with(dongle::nameMarker)) text.remove_prefix(dongle::nameMarker.size());
    const std::string found = digitsOf(text);
    PackedAddress packed = 0;
    if (std::from_chars(found.data(), found.data() + found.size(), packed, 16).ec != std::errc()) return std::nullopt;
    return asHeard(std::string(AddressText(packed).view()));
}

Address Address::asHeard(std::string text) { return {AsItIs(), std::move(text)}; }

Address::Address(std::string_view text) {
    auto address = parse(text);
    if (!address) {
        throw std::invalid_argument("'" + std::string(text) +
                                    "' is no address: twelve hexadecimal digits, as in 00:11:22:AA:BB:CC");
    }
    *this = *std::move(address);
}

bool Address::isUsual() const noexcept { return packedAddress(text_) != noAddress; }

}  // namespace nearcast
