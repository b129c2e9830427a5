// SPDX-License-Identifier: Apache-2.0
#include "nearest/DongleAddress.h"

#include "support/Utf8.h"

namespace nearcast::nearest {

namespace {

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
    format(payload.subspan<addressOffset, octets>());
    return true;
}

void DongleAddress::format(std::span<const std::uint8_t, octets> address) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    char* place = formatted_.data();
    for (const std::uint8_t octet : address) {
        *place++ = digits[octet >> 4];
        *place++ = digits[octet & 15];
        *place++ = ':';
    }
    view_ = std::string_view(formatted_.data(), formatted_.size() - 1);
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
