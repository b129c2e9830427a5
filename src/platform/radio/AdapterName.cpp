// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/AdapterName.h"

#include "support/AddressText.h"

#include <algorithm>

namespace nearcast {

bool isAdapterNumber(std::string_view text) {
    constexpr std::string_view prefix = "hci";
    constexpr std::size_t mostDigits = 5;
    if (!text.starts_with(prefix)) return false;
    const std::string_view number = text.substr(prefix.size());
    return !number.empty() && number.size() <= mostDigits &&
           number.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string adapterAddress(std::string_view text) {
    std::string capitals(text);
    std::transform(capitals.begin(), capitals.end(), capitals.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'f' ? static_cast<char>(letter - 32) : letter;
    });
    const PackedAddress address = packedAddress(capitals);
    return address == noAddress || address == 0 ? std::string() : capitals;
}

bool namesAdapter(std::string_view text) { return isAdapterNumber(text) || !adapterAddress(text).empty(); }

}  // namespace nearcast
