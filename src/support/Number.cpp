// SPDX-License-Identifier: Apache-2.0
#include "support/Number.h"

#include <nearcast/SettingRecord.h>

#include <algorithm>
#include <cmath>

namespace nearcast {

std::int32_t clampedToInt32(std::int64_t value) noexcept {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

std::int32_t int32FromNumber(double value) noexcept {
    if (std::isnan(value)) return 0;
    return static_cast<std::int32_t>(std::clamp<double>(value, INT32_MIN, INT32_MAX));
}

std::int32_t int32FromText(std::string_view text) noexcept {
    const auto start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) return 0;
    text.remove_prefix(start);
    const bool negative = text.front() == '-';
    if (negative || text.front() == '+') text.remove_prefix(1);
    std::int64_t value = 0;
    for (const char letter : text) {
        if (letter < '0' || letter > '9') break;
        value = std::min<std::int64_t>(value * 10 + (letter - '0'), std::int64_t{1} << 40);
    }
    return clampedToInt32(negative ? -value : value);
}

std::int32_t SettingValue::intValue() const noexcept {
    if (const auto* value = as<bool>()) return *value ? 1 : 0;
    if (const auto* value = as<std::int64_t>()) return clampedToInt32(*value);
    if (as<std::uint64_t>() != nullptr) return INT32_MAX;  // held only above the signed range
    if (const auto* value = as<double>()) return int32FromNumber(*value);
    if (const auto* value = as<std::string>()) return int32FromText(*value);
    return 0;
}

}  // namespace nearcast
