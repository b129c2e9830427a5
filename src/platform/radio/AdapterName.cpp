// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/AdapterName.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace nearcast {

namespace {

constexpr std::size_t octetPitch = 3;  // two digits and a colon

/// Reads two hexadecimal digits.
bool readOctet(std::string_view digits, std::uint8_t& octet) {
    const char* const end = digits.data() + digits.size();
    constexpr int hexadecimal = 16;
    const auto [stop, error] = std::from_chars(digits.data(), end, octet, hexadecimal);
    return error == std::errc() && stop == end;
}

}  // namespace

std::optional<DeviceAddress> readAdapterAddress(std::string_view text) {
    DeviceAddress address{};
    if (text.size() != address.size() * octetPitch - 1) return std::nullopt;
    for (std::size_t i = 0; i < address.size(); ++i) {
        if (i > 0 && text[i * octetPitch - 1] != ':') return std::nullopt;
        if (!readOctet(text.substr(i * octetPitch, 2), address[i])) return std::nullopt;
    }
    return address;
}

std::string adapterAddressText(const DeviceAddress& address) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t octet : address) {
        if (!text.empty()) text += ':';
        text += digits[octet >> 4U];
        text += digits[octet & 0xFU];
    }
    return text;
}

bool isAdapterNumber(std::string_view text) {
    constexpr std::string_view prefix = "hci";
    constexpr std::size_t mostDigits = 5;
    if (!text.starts_with(prefix)) return false;
    const std::string_view number = text.substr(prefix.size());
    return !number.empty() && number.size() <= mostDigits &&
           number.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string adapterAddress(std::string_view text) {
    const auto address = readAdapterAddress(text);
    return address && namesAdapter(*address) ? adapterAddressText(*address) : std::string();
}

bool namesAdapter(std::string_view text) { return isAdapterNumber(text) || !adapterAddress(text).empty(); }

}  // namespace nearcast
