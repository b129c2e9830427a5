// SPDX-License-Identifier: Apache-2.0
#include "nearest/DongleAddress.h"

#include "support/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace nearcast::nearest {

namespace {

constexpr std::size_t octets = AddressText::octets;
constexpr std::size_t addressOffset = 2;
constexpr std::string_view nameMarker = "QX";
constexpr std::size_t pieceCharacters = 2;

}  // namespace

bool DongleAddress::read(const HeardAdvertisement& heard) {
    if (!heard.manufacturerData) return false;
    const auto payload = *heard.manufacturerData;
    if (payload.size() < addressOffset || payload[0] != 0xFF || payload[1] != 0xFF) {
        return heard.name && readName(*heard.name);
    }
    if (payload.size() < addressOffset + octets) return false;
    PackedAddress packed = 0;
    for (const std::uint8_t octet : payload.subspan(addressOffset, octets)) packed = packed << 8 | octet;
    formatted_.assign(packed);
    view_ = formatted_.view();
    return true;
}

bool DongleAddress::readName(std::string_view name) {
    constexpr std::size_t needed = nameMarker.size() + octets * pieceCharacters;
    fromName_.clear();
    if (!hasCharacters(name, needed)) {
        fromName_ = name;
    } else {
        for (std::size_t piece = 0; piece < octets; ++piece) {
            if (piece != 0) fromName_.push_back(':');
            fromName_.append(characters(name, nameMarker.size() + piece * pieceCharacters, pieceCharacters));
        }
    }
    view_ = fromName_;
    return view_.find(nameMarker) == std::string_view::npos;
}

}  // namespace nearcast::nearest
