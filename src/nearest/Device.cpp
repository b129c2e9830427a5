// SPDX-License-Identifier: Apache-2.0
#include "nearest/Device.h"

#include <algorithm>
#include <cmath>

namespace nearcast::nearest {

void Device::hear(double at, std::int32_t RSSI, const NearestSettings& settings) {
    const double reading = RSSI;
    const bool first = !level;
    if (first || !raw) {
        level = reading;
    } else if (reading > *level) {
        level = *level + settings.attack * (reading - *level);
    } else {
        level = reading + (*level - reading) * std::exp(-(at - rawAt) / settings.decay);
    }
    if (first) trail = *level;
    draw(at - heardAt, settings);
    raw = RSSI;
    rawAt = at;
    heardAt = at;
    everHeard = true;
    settle(at, settings);
}

void Device::report(double at, std::int32_t RSSI, const NearestSettings& settings) {
    const bool first = !level;
    // Where raw readings come too, they are the better source.
    if (!raw || at - rawAt >= settings.silence) {
        raw.reset();
        level = RSSI;
    }
    if (first) trail = *level;
    draw(at - heardAt, settings);
    smoothed = RSSI;
    heardAt = at;
    everHeard = true;
    settle(at, settings);
}

/// Moves the trail toward the level.
void Device::draw(double elapsed, const NearestSettings& settings) {
    trail = *level + (trail - *level) * std::exp(-elapsed / settings.decay);
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
        evidence = 0;
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

double Device::expected(const NearestSettings& settings) const {
    return *level + settings.anticipation * (*level - trail);
}

}  // namespace nearcast::nearest
