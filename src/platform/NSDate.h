// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>

namespace nearcast {

/// A moment on the platform's clock, which never goes back and runs through suspend.
class NSDate {
public:
    using Duration = std::chrono::nanoseconds;

    constexpr NSDate() = default;
    constexpr explicit NSDate(Duration sinceStart) : sinceStart_(sinceStart) {}

    /// Since the clock's arbitrary start.
    [[nodiscard]] constexpr Duration sinceStart() const { return sinceStart_; }

    static constexpr NSDate dateWithTimeInterval(Duration interval, NSDate sinceDate) {
        return NSDate(sinceDate.sinceStart_ + interval);
    }
    [[nodiscard]] constexpr NSDate earlierDate(NSDate other) const {
        return other.sinceStart_ < sinceStart_ ? other : *this;
    }
    [[nodiscard]] constexpr bool isEqualToDate(NSDate other) const { return sinceStart_ == other.sinceStart_; }

private:
    Duration sinceStart_{0};
};

}  // namespace nearcast
