// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace nearcast {

/// The lowest value, in dBm (Core Specification, Volume 4, Part E, 7.7.65.2).
inline constexpr std::int32_t kQXMinRSSI = -127;
/// No reading is available; also the answer of operations that have none to give.
inline constexpr std::int32_t kQXInvalidRSSI = 127;

}  // namespace nearcast
