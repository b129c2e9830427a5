// SPDX-License-Identifier: Apache-2.0
#include "web/Asset.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace nearcast::cli {

namespace {

std::uint32_t digit(char character) {
    return static_cast<std::uint32_t>(character <= '9' ? character - '0' : character - 'a' + 10);
}

/// Hexadecimal, lower case, to Base64 (RFC 4648, 4).
std::string base64OfHexadecimal(std::string_view text) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    // Six digits are three octets, and these four letters.
    for (std::size_t place = 0; place < text.size(); place += 6) {
        const std::string_view part = text.substr(place, 6);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 6; ++i) bits = bits << 4U | (i < part.size() ? digit(part[i]) : 0U);
        const std::size_t meaning = part.size() / 2 + 1;
        for (std::size_t i = 0; i < 4; ++i) {
            result += i < meaning ? letters[bits >> (18U - 6U * i) & 63U] : '=';
        }
    }
    return result;
}

}  // namespace

const Asset& assetNamed(std::span<const Asset> assets, std::string_view name) {
    const auto found =
        std::find_if(assets.begin(), assets.end(), [&](const Asset& asset) { return asset.name == name; });
    if (found == assets.end()) throw std::logic_error("the program has no file " + std::string(name));
    return *found;
}

std::string policySource(const Asset& asset) { return "'sha256-" + base64OfHexadecimal(asset.SHA256) + "'"; }

}  // namespace nearcast::cli
