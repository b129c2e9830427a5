// SPDX-License-Identifier: Apache-2.0
#include "lab/Rule.h"

#include "lab/NearestAsRule.h"
#include "lab/StrongestLevel.h"

#include <nearcast/RadioHealth.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace nearcast::lab {

namespace {

void tell(const PlaybackEvent& event, const Playback& playback, Rule& rule) {
    using Kind = PlaybackEvent::Kind;
    if (event.kind == Kind::radio) return rule.radio(event.at, event.RSSI == CBManagerStatePoweredOn);
    if (event.dongle == PlaybackEvent::noDongle) return;
    const PlaybackDongle& dongle = playback.dongles[event.dongle];
    if (dongle.portName.empty()) return;
    switch (event.kind) {
        case Kind::heard: return rule.heard(event.at, dongle.MACAddr, event.RSSI);
        case Kind::reported: return rule.reported(event.at, dongle.MACAddr, event.RSSI);
        case Kind::silent: return rule.silent(event.at, dongle.MACAddr);
        default: return;
    }
}

using Source = StrongestLevel::Source;

template <class OneLevel, Source source>
std::unique_ptr<Rule> strongest(const Settings& /*registry*/, const NearestSettings& /*settings*/) {
    return std::make_unique<StrongestLevel>(source, [] { return std::make_unique<OneLevel>(); });
}

template <const KalmanLevel::Noise& noise>
std::unique_ptr<Rule> kalman(const Settings& /*registry*/, const NearestSettings& /*settings*/) {
    return std::make_unique<StrongestLevel>(Source::raw, [] { return std::make_unique<KalmanLevel>(noise); });
}

std::unique_ptr<Rule> nearestRule(const Settings& registry, const NearestSettings& settings) {
    return std::make_unique<NearestAsRule>(registry, settings);
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
    NamedRule{nearestRuleName, "what Nearest decides, with its settings", nearestRule},
};

}  // namespace

void tell(const Playback& playback, Rule& rule, const std::function<void(double at)>& sample) {
    auto event = playback.events.begin();
    for (std::size_t count = 0;; ++count) {
        const double at = static_cast<double>(count) * sampleInterval;
        if (at > playback.end) return;
        for (; event != playback.events.end() && event->at <= at; ++event) tell(*event, playback, rule);
        sample(at);
    }
}

Answers answersOf(const Playback& playback, Rule& rule) {
    Answers answers;
    tell(playback, rule, [&](double at) { answers.emplace_back(rule.nearest(at)); });
    return answers;
}

std::span<const NamedRule> rules() noexcept { return list; }

const NamedRule* findRule(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(list.begin(), list.end(), [&](const auto& rule) { return rule.name == name; });
    return found == list.end() ? nullptr : found;
}

}  // namespace nearcast::lab
