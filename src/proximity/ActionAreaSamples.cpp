// SPDX-License-Identifier: Apache-2.0
#include "proximity/ActionAreaSamples.h"

#include "core/RSSI.h"

namespace nearcast {

namespace {
constexpr std::size_t passedOver = 4;
}

void ActionAreaSamples::append(std::int32_t RSSI) noexcept {
    const std::size_t place = count_.load(std::memory_order_relaxed);
    if (place == enough) return;
    samples_[place].store(RSSI, std::memory_order_relaxed);
    count_.store(place + 1, std::memory_order_release);
}

std::int32_t ActionAreaSamples::secondStrongest() const noexcept {
    std::int32_t strongest = kQXMinRSSI;
    std::int32_t second = kQXMinRSSI;
    for (std::size_t place = passedOver; place < enough; ++place) {
        const std::int32_t sample = samples_[place].load(std::memory_order_relaxed);
        if (sample > strongest) {
            second = strongest;
            strongest = sample;
        } else if (sample > second) {
            second = sample;
        }
    }
    return second;
}

}  // namespace nearcast
