// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

namespace nearcast {

/// The nearest 32-bit integer.
std::int32_t clampedToInt32(std::int64_t value) noexcept;
/// Cut toward zero and clamped; NaN is 0.
std::int32_t int32FromNumber(double value) noexcept;
/// The number that the text begins with, after white space and a sign, clamped; 0 where it begins with none.
std::int32_t int32FromText(std::string_view text) noexcept;

}  // namespace nearcast
