// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"

#include "support/Utf8.h"

namespace nearcast::cli {

namespace {

/// C0, DEL and C1 controls (U+0080 to U+009F), and single octets that begin no character.
bool isUnprintable(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return first < 0x20 || first >= 0x7F;
    return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::string_view character = text.substr(0, characterLength(text));
        result += isUnprintable(character) ? std::string_view("\xEF\xBF\xBD") : character;
        text.remove_prefix(character.size());
    }
    return result;
}

std::string column(std::string_view text, std::size_t width) {
    const std::string clean = printable(text);
    std::string result;
    std::size_t used = 0;
    for (std::string_view rest = clean; !rest.empty() && used < width; ++used) {
        const std::size_t length = characterLength(rest);
        result += rest.substr(0, length);
        rest.remove_prefix(length);
    }
    return result.append(width - used, ' ');
}

}  // namespace nearcast::cli
