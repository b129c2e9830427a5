// SPDX-License-Identifier: Apache-2.0
#include "nearest/Device.h"

#include <algorithm>
#include <cmath>

namespace nearcast::nearest {

void Device::hear(double at, std::int32_t RSSI, const NearestSettings& settings) {
    const double reading = RSSI;
    if (!level || !raw) {
        level = reading;
    } else if (reading > *level) {
        level = *level + settings.attack * (reading - *level);
    } else {
        level = reading + (*level - reading) * std::exp(-(at - rawAt) / settings.decay);
    }
    raw = RSSI;
    rawAt = at;
    heardAt = at;
    everHeard = true;
    settle(at, settings);
}

void Device::report(double at, std::int32_t RSSI, const NearestSettings& settings) {
    smoothed = RSSI;
    heardAt = at;
    everHeard = true;
    // Where raw readings come too, they tell more.
    if (!raw || at - rawAt >= settings.silence) {
        raw.reset();
        level = RSSI;
    }
    settle(at, settings);
}

void Device::forget() {
    raw.reset();
    smoothed.reset();
    level.reset();
    insideSince.reset();
    belowSince.reset();
    evidence = 0;
}

void Device::settle(double at, const NearestSettings& settings) {
    const bool inside = level && *level >= threshold;
    const bool below = level && *level < threshold - settings.hysteresis;
    if (!inside) {
        insideSince.reset();
    } else if (!insideSince) {
        insideSince = at;
    }
    if (!below) {
        belowSince.reset();
    } else if (!belowSince) {
        belowSince = at;
    }
}

bool Device::isInside(double at, const NearestSettings& settings) const {
    return insideSince && at - *insideSince >= settings.dwell;
}

bool Device::isOutside(double at, const NearestSettings& settings) const {
    return belowSince && at - *belowSince >= settings.dwell;
}

double Device::weight() const {
    constexpr double doubling = 6;  // dB: twice the amplitude, in free space half the distance
    constexpr double least = 0.125;
    constexpr double most = 4;
    return std::clamp(std::exp2((level.value_or(close) - close) / doubling), least, most);
}

}  // namespace nearcast::nearest
