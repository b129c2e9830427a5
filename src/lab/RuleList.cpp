// SPDX-License-Identifier: Apache-2.0
#include "lab/RuleList.h"

#include "lab/NearestAsRule.h"
#include "lab/StrongestLevel.h"

#include <algorithm>
#include <array>

namespace nearcast::lab {

namespace {

using Source = StrongestLevel::Source;

template <class OneLevel, Source source>
std::unique_ptr<Rule> strongest(const Settings& /*registry*/, const NearestSettings& /*settings*/) {
    return std::make_unique<StrongestLevel>(source, [] { return std::make_unique<OneLevel>(); });
}

template <const KalmanLevel::Noise& noise>
std::unique_ptr<Rule> kalman(const Settings& /*registry*/, const NearestSettings& /*settings*/) {
    return std::make_unique<StrongestLevel>(Source::raw, [] { return std::make_unique<KalmanLevel>(noise); });
}

constexpr std::array list{
    NamedRule{"strongest-report", "the strongest smoothed report of the manager",
              strongest<LatestLevel, Source::reports>},
    NamedRule{"maximum-7", "the highest maximum of 7 readings", strongest<MaximumLevel, Source::raw>},
    NamedRule{"trimmed-mean-20s", "the highest mean over 20 s, a fifth of the readings cut off at each end",
              strongest<TrimmedMeanLevel, Source::raw>},
    NamedRule{"exponential-0.1", "the highest exponential average, 0.1 a reading",
              strongest<ExponentialLevel, Source::raw>},
    NamedRule{"kalman-quick", "the highest estimate of a Kalman filter (noise: process 4 dB²/s, readings 16 dB²)",
              kalman<KalmanLevel::quick>},
    NamedRule{"kalman-calm", "the highest estimate of a Kalman filter (noise: process 0.25 dB²/s, readings 36 dB²)",
              kalman<KalmanLevel::calm>},
    NamedRule{"median-7", "the highest median of 7 readings", strongest<MedianLevel, Source::raw>},
    NamedRule{"strongest-raw", "the strongest latest reading", strongest<LatestLevel, Source::raw>},
    NamedRule{nearestRuleName, "what Nearest decides, with its settings", makeNearestRule},
};

}  // namespace

std::span<const NamedRule> rules() noexcept { return list; }

const NamedRule* findRule(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(list.begin(), list.end(), [&](const auto& rule) { return rule.name == name; });
    return found == list.end() ? nullptr : found;
}

}  // namespace nearcast::lab
