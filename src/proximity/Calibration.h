// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace nearcast {

/// The readings that one calibration collects. The handler appends under the calibration lock; the calibration reads
/// from its own thread, also without the lock, which is why each part is atomic.
class ActionAreaSamples {
public:
    static constexpr std::size_t enough = 15;

    /// Appends a reading in dBm; one more than enough is ignored. One thread at a time.
    void append(std::int32_t RSSI) noexcept;
    [[nodiscard]] std::size_t count() const noexcept { return count_.load(std::memory_order_acquire); }
    [[nodiscard]] bool isEnough() const noexcept { return count() >= enough; }
    /// The second strongest of the last eleven, in dBm; of two that are strongest, one counts as the second. The first
    /// four are passed over: the user may still be putting the device down. Only when there are enough.
    [[nodiscard]] std::int32_t secondStrongest() const noexcept;

private:
    std::array<std::atomic<std::int32_t>, enough> samples_{};
    std::atomic<std::size_t> count_{0};
};

}  // namespace nearcast
