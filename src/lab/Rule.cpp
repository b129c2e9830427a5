// SPDX-License-Identifier: Apache-2.0
#include "lab/Rule.h"

#include "lab/NearestAsRule.h"
#include "lab/StrongestLevel.h"

#include <nearcast/RadioHealth.h>

#include <algorithm>
#include <array>

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

/// Seconds after which a rule that hears of nothing does not change any more. No rule remembers for longer than the
/// settings of `Nearest` may make it, one time after another.
double longestAftermath() {
    double longest = 0;
    for (const NearestSetting& setting : nearestSettings()) longest += setting.unit == "s" ? setting.most : 0;
    static_assert(TrimmedMeanLevel::window <= 60 && StrongestLevel::presence <= 60);
    return longest;
}

/// How many samples are before the event, or, where there is none, in the playback.
std::uint64_t samplesUntil(std::vector<PlaybackEvent>::const_iterator event, const Playback& playback) {
    const auto all = static_cast<std::uint64_t>(playback.end / sampleInterval) + 1;
    return event == playback.events.end() ? all : std::min(all, firstSampleFrom(event->at));
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

void tell(const Playback& playback, Rule& rule, const std::function<void(const Samples& samples)>& sample) {
    static const double rest = longestAftermath();
    auto event = playback.events.begin();
    double last = 0;  // of the events
    for (Samples next; next.from() <= playback.end; next = {next.first + next.count, 1}) {
        for (; event != playback.events.end() && event->at <= next.from(); ++event) {
            tell(*event, playback, rule);
            last = event->at;
        }
        if (next.from() > last + rest) next.count = samplesUntil(event, playback) - next.first;
        sample(next);
    }
}

Answers answersOf(const Playback& playback, Rule& rule) {
    Answers answers;
    tell(playback, rule, [&](const Samples& samples) {
        const std::string_view answer = rule.nearest(samples.to());
        if (!answers.empty() && answers.back().answer == answer) {
            answers.back().count += samples.count;
        } else {
            answers.push_back({std::string(answer), samples.count});
        }
    });
    return answers;
}

std::span<const NamedRule> rules() noexcept { return list; }

const NamedRule* findRule(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(list.begin(), list.end(), [&](const auto& rule) { return rule.name == name; });
    return found == list.end() ? nullptr : found;
}

}  // namespace nearcast::lab
