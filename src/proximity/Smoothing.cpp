// SPDX-License-Identifier: Apache-2.0
#include "proximity/Smoothing.h"

namespace nearcast {

namespace {

/// |left - right| as 32-bit machines compute it: it wraps, and the distance of the extremes is negative.
std::int32_t distance(std::int32_t left, std::int32_t right) {
    const std::uint32_t difference = static_cast<std::uint32_t>(left) - static_cast<std::uint32_t>(right);
    return static_cast<std::int32_t>(static_cast<std::int32_t>(difference) < 0 ? 0 - difference : difference);
}

}  // namespace

Smoothing::Smoothing(std::uint64_t capacity, std::int32_t first)
    : rawRSSI_(capacity), maxRSSI_(capacity), outputRSSI_(capacity) {
    rawRSSI_.enqueue(first);
}

std::int32_t Smoothing::strongest(std::int32_t newest) const {
    std::int32_t result = newest;
    for (const std::int32_t reading : rawRSSI_) {
        if (reading > result) result = reading;
    }
    return result;
}

std::int32_t Smoothing::held(std::int32_t candidate) const {
    const std::int32_t last = *outputRSSI_.lastObject();
    if (distance(last, candidate) < 3) return candidate;
    for (std::size_t step = maxRSSI_.count(); step-- > 1;) {
        if (distance(outputRSSI_[step - 1], maxRSSI_[step]) <= 2) return last;
    }
    return candidate;
}

Smoothing::Result Smoothing::add(std::int32_t RSSI, std::uint64_t samplingNumber) {
    rawRSSI_.enqueue(RSSI);
    Result result;
    result.readings = rawRSSI_.count();
    result.outputs = outputRSSI_.count();
    if (result.readings < samplingNumber) return result;
    const std::int32_t candidate = strongest(RSSI);
    const bool settling = result.outputs < samplingNumber;
    result.stage = settling ? Stage::settling : Stage::holding;
    result.output = settling ? candidate : held(candidate);
    maxRSSI_.enqueue(candidate);
    outputRSSI_.enqueue(*result.output);
    return result;
}

}  // namespace nearcast
