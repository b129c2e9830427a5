// SPDX-License-Identifier: Apache-2.0
#include "lab/Level.h"

#include <algorithm>
#include <vector>

namespace nearcast::lab {

void LatestLevel::add(double /*at*/, std::int32_t RSSI) { value_ = RSSI; }

std::optional<double> LatestLevel::value(double /*at*/) { return value_; }

void SevenReadings::add(double /*at*/, std::int32_t RSSI) {
    readings_[next_] = RSSI;
    next_ = (next_ + 1) % most;
    count_ = std::min(count_ + 1, most);
}

std::optional<double> SevenReadings::value(double /*at*/) {
    if (count_ == 0) return std::nullopt;
    auto readings = readings_;
    return of(readings.data(), count_);
}

double MaximumLevel::of(std::int32_t* readings, std::size_t count) {
    return *std::max_element(readings, readings + count);
}

double MedianLevel::of(std::int32_t* readings, std::size_t count) {
    std::sort(readings, readings + count);
    const std::size_t upper = count / 2;
    const std::size_t lower = (count - 1) / 2;
    return (static_cast<double>(readings[lower]) + readings[upper]) / 2;
}

void TrimmedMeanLevel::add(double at, std::int32_t RSSI) {
    if (readings_.size() == most) readings_.pop_front();
    readings_.push_back({at, RSSI});
}

std::optional<double> TrimmedMeanLevel::value(double at) {
    constexpr std::size_t part = 5;
    while (!readings_.empty() && at - readings_.front().at >= window) readings_.pop_front();
    if (readings_.empty()) return std::nullopt;
    std::vector<std::int32_t> sorted;
    sorted.reserve(readings_.size());
    for (const Reading& reading : readings_) sorted.push_back(reading.RSSI);
    std::sort(sorted.begin(), sorted.end());
    const std::size_t cut = sorted.size() / part;
    double sum = 0;
    for (std::size_t place = cut; place < sorted.size() - cut; ++place) sum += sorted[place];
    return sum / static_cast<double>(sorted.size() - 2 * cut);
}

void ExponentialLevel::add(double /*at*/, std::int32_t RSSI) {
    value_ = value_ ? *value_ + weight * (RSSI - *value_) : RSSI;
}

std::optional<double> ExponentialLevel::value(double /*at*/) { return value_; }

void KalmanLevel::add(double at, std::int32_t RSSI) {
    if (!value_) {
        value_ = RSSI;
        variance_ = noise_.measurement;
    } else {
        const double predicted = variance_ + noise_.process * std::max(0.0, at - at_);
        const double gain = predicted / (predicted + noise_.measurement);
        value_ = *value_ + gain * (RSSI - *value_);
        variance_ = (1 - gain) * predicted;
    }
    at_ = at;
}

std::optional<double> KalmanLevel::value(double /*at*/) { return value_; }

}  // namespace nearcast::lab
