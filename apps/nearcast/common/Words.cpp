// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"

#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace nearcast::cli {

std::string column(std::string_view text, std::size_t width) {
    const std::string clean = printable(text);
    std::string result;
    std::size_t used = 0;
    for (std::string_view rest = clean; !rest.empty();) {
        const std::string_view character = rest.substr(0, characterLength(rest));
        const std::size_t columns = widthOf(character);
        if (used + columns > width) break;
        result += character;
        used += columns;
        rest.remove_prefix(character.size());
    }
    return result.append(width - used, ' ');
}

std::string decimals(double value) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string counted(std::uint64_t count, std::string_view what) {
    return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

std::string addressText(std::span<const std::uint8_t> octets) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t octet : octets) {
        if (!text.empty()) text.push_back(':');
        text.push_back(digits[octet >> 4]);
        text.push_back(digits[octet & 15]);
    }
    return text;
}

std::string stateInWords(const RadioHealth& health) {
    return nameOf(health.state) + (health.why.empty() ? "" : " (" + health.why + ")");
}

std::string healthInWords(const RadioHealth& health, double now) {
    std::string text = nameOf(health.state) + " for " + decimals(std::max(0.0, now - health.since)) + " s, ";
    text += decimals(health.reportsPerSecond) + " reports/s, ";
    text += health.lastReportAge ? "last " + decimals(*health.lastReportAge) + " s ago" : "nothing heard yet";
    text += ", " + counted(health.restarts, "restart");
    return text + (health.why.empty() ? "" : ": " + health.why);
}

}  // namespace nearcast::cli
