// SPDX-License-Identifier: Apache-2.0
#include "nearest/Surroundings.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace nearcast::nearest {

void NextLevels::add(double level) {
    if (known_ < highest_.size()) {
        highest_[known_++] = level;
        return;
    }
    double& lowest = *std::min_element(highest_.begin(), highest_.end());
    lowest = std::max(lowest, level);
}

std::optional<double> NextLevels::mean() const {
    if (known_ == 0) return std::nullopt;
    return std::accumulate(highest_.begin(), highest_.begin() + known_, 0.0) / static_cast<double>(known_);
}

void Surroundings::learn(double elapsed, double strongest, std::optional<double> next,
                         const NearestSettings& settings) {
    learnedFor_ = std::min(learnedFor_ + elapsed, settings.closeTime);
    const double part = std::min(elapsed / learnedFor_, 1.0);
    close_ += (strongest - close_) * part;
    if (next) contrast_ += (strongest - *next - contrast_) * part;
}

double Surroundings::clarity(const NearestSettings& settings) const {
    constexpr double most = 4;
    const double ratio = contrast_ / settings.contrast;
    return std::clamp(ratio * ratio, 1.0, most);
}

double Surroundings::weight(double level, const NearestSettings& settings) const {
    constexpr double doubling = 3;  // dB: twice the power
    constexpr double least = 0.0625;
    constexpr double most = 8;
    return std::clamp(std::exp2((level - close_) / (doubling * clarity(settings))), least, most);
}

}  // namespace nearcast::nearest
