// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace nearcast::lab {

/// How often a rule is asked, in seconds: at 0, 0.5, 1 and so on of the recording's clock.
inline constexpr double sampleInterval = 0.5;

/// The first sample that is not before a time, in seconds.
inline std::uint64_t firstSampleFrom(double time) {
    return static_cast<std::uint64_t>(std::ceil(std::max(0.0, time) / sampleInterval));
}

/// Samples in a row, at least one, at which everything is the same: one, or those of a leap, which may be billions.
struct Samples {
    std::uint64_t first = 0;
    std::uint64_t count = 1;

    /// Of the first and the last of them, in seconds.
    [[nodiscard]] double from() const { return static_cast<double>(first) * sampleInterval; }
    [[nodiscard]] double to() const { return static_cast<double>(first + count - 1) * sampleInterval; }
    /// How many of them are before a time, in seconds.
    [[nodiscard]] std::uint64_t countBefore(double time) const {
        return std::clamp(firstSampleFrom(time), first, first + count) - first;
    }
    /// Leaves out the first ones.
    void drop(std::uint64_t some) {
        first += some;
        count -= some;
    }
};

}  // namespace nearcast::lab
