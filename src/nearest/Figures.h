// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace nearcast::nearest {

/// The shortest text that reads back as the same number.
inline std::string figure(double value) {
    std::array<char, 32> text{};  // the longest double in shortest form has 24 characters
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? std::string(text.data(), end) : std::string("?");
}

/// A figure for people: at most one decimal place, none where it is 0; always with a point, whatever the locale.
inline std::string oneDecimal(double value) {
    constexpr double tenth = 10;
    constexpr double tooLarge = 1e12;  // where tenths have no meaning any more
    if (!(std::abs(value) < tooLarge)) return figure(value);
    // Adding 0 makes a negative zero positive.
    return figure(std::round(value * tenth) / tenth + 0.0);
}

}  // namespace nearcast::nearest
