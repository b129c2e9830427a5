// SPDX-License-Identifier: Apache-2.0
#include "proximity/Smoothing.h"

namespace nearcast {

namespace {

/// |left - right| as 32-bit machines compute it: it wraps, and the distance of the extremes is negative.
std::int32_t distance(std::int32_t left, std::int32_t right) {
    const std::uint32_t difference = static_cast<std::uint32_t>(left) - static_cast<std::uint32_t>(right);
    return static_cast<std::int32_t>(static_cast<std::int32_t>(difference) < 0 ? 0 - difference : difference);
}

bool isWithinTwo(std::int32_t left, std::int32_t right) { return distance(left, right) <= 2; }

}  // namespace

Smoothing::Smoothing(std::uint64_t capacity, std::int32_t first) : readings_(capacity) { readings_.add(first); }

// A step leads from one output to the next candidate; a history of n outputs has n - 1 of them.
bool Smoothing::historyFollowed() const noexcept { return outputs_ >= 2 && stepsSinceFollowed_ <= outputs_ - 2; }

std::int32_t Smoothing::held(std::int32_t candidate) const noexcept {
    if (outputs_ == 0 || isWithinTwo(lastOutput_, candidate) || !historyFollowed()) return candidate;
    return lastOutput_;
}

void Smoothing::remember(std::int32_t candidate, std::int32_t output) noexcept {
    if (outputs_ != 0 && isWithinTwo(lastOutput_, candidate)) {
        stepsSinceFollowed_ = 0;
    } else if (stepsSinceFollowed_ != never) {
        ++stepsSinceFollowed_;
    }
    lastOutput_ = output;
    if (outputs_ < readings_.capacity()) ++outputs_;
}

Smoothing::Result Smoothing::add(std::int32_t RSSI, std::uint64_t samplingNumber) {
    const std::int32_t candidate = readings_.add(RSSI);
    Result result;
    result.readings = readings_.count();
    result.outputs = outputs_;
    if (result.readings < samplingNumber) return result;
    const bool settling = result.outputs < samplingNumber;
    result.stage = settling ? Stage::settling : Stage::holding;
    result.output = settling ? candidate : held(candidate);
    remember(candidate, *result.output);
    return result;
}

}  // namespace nearcast
