// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace nearcast {

/// The machine's clock that never goes back and runs through suspend: CLOCK_BOOTTIME. From any thread.
class SystemClock {
public:
    using Time = std::chrono::nanoseconds;  ///< since the machine started

    static Time now() noexcept;
    /// Blocks the calling thread until the clock shows `time`, signals or not.
    static void sleepUntil(Time time) noexcept;
};

}  // namespace nearcast
