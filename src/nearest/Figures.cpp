// SPDX-License-Identifier: Apache-2.0
#include "nearest/Figures.h"

#include <array>
#include <charconv>
#include <cmath>

namespace nearcast::nearest {

namespace {

// The longest double in shortest form has 24 characters.
constexpr std::size_t enough = 32;

}  // namespace

std::string figure(double value) {
    std::array<char, enough> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() ? std::string(text.data(), end) : std::string("?");
}

std::string oneDecimal(double value) {
    constexpr double tenth = 10;
    constexpr double tooLarge = 1e12;  // where tenths have no meaning any more
    if (!(std::abs(value) < tooLarge)) return figure(value);
    // Adding 0 makes a negative zero positive.
    return figure(std::round(value * tenth) / tenth + 0.0);
}

}  // namespace nearcast::nearest
