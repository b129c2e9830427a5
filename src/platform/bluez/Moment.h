// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>

namespace nearcast::bluez {

/// A moment of the clock that this module lives by: nanoseconds since an arbitrary start.
using Time = std::chrono::nanoseconds;

/// Makes `earliest` the earlier of the two, where there is one.
inline void takeEarlier(std::optional<Time>& earliest, const std::optional<Time>& other) {
    if (other && (!earliest || *other < *earliest)) earliest = other;
}

}  // namespace nearcast::bluez
