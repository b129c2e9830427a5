// SPDX-License-Identifier: Apache-2.0
#include "scenario/DongleOfLine.h"

#include "support/Utf8.h"

namespace nearcast::scenario {

namespace {

constexpr std::string_view marker = "QX";
constexpr std::size_t pieces = 6;

std::string addressOf(std::span<const std::uint8_t, pieces> octets) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string address;
    for (const std::uint8_t octet : octets) {
        if (!address.empty()) address.push_back(':');
        address.push_back(digits[octet >> 4]);
        address.push_back(digits[octet & 15]);
    }
    return address;
}

std::string addressOf(std::string_view name) {
    if (!hasCharacters(name, marker.size() + pieces * 2)) return std::string(name);
    std::string address;
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        if (piece != 0) address.push_back(':');
        address.append(characters(name, marker.size() + piece * 2, 2));
    }
    return address;
}

}  // namespace

std::optional<std::string> dongleOf(std::optional<std::string_view> name,
                                    std::optional<std::span<const std::uint8_t>> manufacturerData) {
    if (!manufacturerData) return std::nullopt;
    const auto payload = *manufacturerData;
    if (payload.size() >= 2 && payload[0] == 0xFF && payload[1] == 0xFF) {
        if (payload.size() < 2 + pieces) return std::nullopt;
        return addressOf(payload.subspan<2, pieces>());
    }
    if (!name) return std::nullopt;
    std::string address = addressOf(*name);
    if (address.find(marker) != std::string::npos) return std::nullopt;
    return address;
}

}  // namespace nearcast::scenario
