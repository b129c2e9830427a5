// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/PcapngClock.h"

#include <algorithm>
#include <cmath>

namespace nearcast::replay {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t latestSeconds = INT64_MAX / nanosecondsPerSecond - 1;

struct Split {
    std::uint64_t seconds = 0;
    std::int64_t nanoseconds = 0;
};

Split decimal(std::uint64_t ticks, int digits) {
    std::uint64_t perSecond = 1;
    for (int i = 0; i < digits; ++i) perSecond *= 10;
    const std::uint64_t fraction = ticks % perSecond;
    // Beyond nanoseconds the last digits are of no interest.
    const auto nanoseconds =
        digits <= 9 ? fraction * (nanosecondsPerSecond / perSecond) : fraction / (perSecond / nanosecondsPerSecond);
    return {ticks / perSecond, static_cast<std::int64_t>(nanoseconds)};
}

Split binary(std::uint64_t ticks, int bits) {
    const std::uint64_t fraction = ticks & ((std::uint64_t{1} << bits) - 1);
    const double seconds = std::ldexp(static_cast<double>(fraction), -bits);
    return {ticks >> bits, std::llround(seconds * static_cast<double>(nanosecondsPerSecond))};
}

Split split(std::uint64_t ticks, std::uint8_t resolution) {
    const int exponent = resolution & 0x7F;
    const bool powerOfTwo = (resolution & 0x80) != 0;
    // So fine that 64 bits of ticks do not reach a second: no clock's.
    if (exponent > (powerOfTwo ? 63 : 19)) return {};
    return powerOfTwo ? binary(ticks, exponent) : decimal(ticks, exponent);
}

}  // namespace

std::int64_t PcapngClock::nanoseconds(std::uint64_t ticks) const {
    const Split time = split(ticks, resolution);
    const auto seconds = static_cast<std::int64_t>(std::min<std::uint64_t>(time.seconds, latestSeconds));
    const std::int64_t offset = std::clamp(offsetSeconds, -latestSeconds, latestSeconds - seconds);
    return (seconds + offset) * nanosecondsPerSecond + time.nanoseconds;
}

}  // namespace nearcast::replay
