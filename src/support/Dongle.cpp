// SPDX-License-Identifier: Apache-2.0
#include "support/Dongle.h"

#include "support/Utf8.h"

#include <algorithm>
#include <iterator>

namespace nearcast {

namespace {

constexpr std::size_t pieces = AddressText::octets;
constexpr std::size_t pieceCharacters = 2;

}  // namespace

std::optional<std::string> dongle::addressInName(std::string_view name) {
    if (!hasCharacters(name, nameMarker.size() + pieces * pieceCharacters)) return std::nullopt;
    std::string address;
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        if (piece != 0) address.push_back(':');
        address.append(characters(name, nameMarker.size() + piece * pieceCharacters, pieceCharacters));
    }
    return address;
}

std::vector<std::uint8_t> dongle::payloadOf(AddressOctets address) {
    std::vector<std::uint8_t> payload(payloadLength);
    std::copy(address.begin(), address.end(), std::copy(payloadMark.begin(), payloadMark.end(), payload.begin()));
    return payload;
}

std::string dongle::nameOf(std::string_view address) {
    std::string name(nameMarker);
    std::copy_if(address.begin(), address.end(), std::back_inserter(name), [](char letter) { return letter != ':'; });
    return name;
}

bool DongleAddress::read(std::optional<std::span<const std::uint8_t>> manufacturerData,
                         std::optional<std::string_view> name) {
    if (!manufacturerData) return false;
    if (dongle::isMarked(*manufacturerData)) {
        const auto address = dongle::addressInPayload(*manufacturerData);
        if (address) take(*address);
        return address.has_value();
    }
    if (!name) return false;
    take(dongle::addressInName(*name).value_or(std::string(*name)));
    return !hasMarker();
}

}  // namespace nearcast
