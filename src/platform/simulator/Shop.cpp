// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Shop.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace nearcast::simulator {

namespace {

/// The advertising events of a dongle lie its interval and a random 0 to 10 ms apart (advDelay: Core Specification,
/// Volume 6, Part B, 4.4.2.2.1), so that two dongles never stay in step.
constexpr std::uint64_t longestDelay = 10'000;  // microseconds

Shop::Time microseconds(double seconds) { return Shop::Time(std::llround(seconds * 1e6)); }

double seconds(Shop::Time time) { return static_cast<double>(time.count()) / 1e6; }

}  // namespace

bool switchedOn(const Dongle& dongle, double seconds) {
    const double within = dongle.offEvery ? std::fmod(seconds, *dongle.offEvery) : seconds;
    return std::none_of(dongle.off.begin(), dongle.off.end(),
                        [&](const Stretch& off) { return off.from <= within && within < off.to; });
}

Shop::Shop(Scene scene) : scene_(std::move(scene)), walk_(scene_.user) {
    senders_.reserve(scene_.dongles.size());
    for (const Dongle& dongle : scene_.dongles) {
        senders_.emplace_back(scene_, dongle);
        const double first = dongle.interval * senders_.back().random.uniform();
        turns_.push({microseconds(first), senders_.size() - 1});
    }
}

std::optional<Shop::Time> Shop::due() const {
    if (turns_.empty()) return std::nullopt;
    const Time at = turns_.top().at;
    if (scene_.duration && seconds(at) > *scene_.duration) return std::nullopt;
    return at;
}

Advertisement Shop::next() {
    const Turn turn = turns_.top();
    turns_.pop();
    const Dongle& dongle = scene_.dongles[turn.dongle];
    Sender& sender = senders_[turn.dongle];
    Advertisement result{turn.at, turn.dongle, std::nullopt};
    const double now = seconds(turn.at);
    const auto heard = sender.channel.receive(now, walk_.at(now), sender.random);
    if (switchedOn(dongle, now)) result.RSSI = heard;
    const Time delay(static_cast<std::int64_t>(sender.random.upTo(longestDelay)));
    turns_.push({turn.at + microseconds(dongle.interval) + delay, turn.dongle});
    return result;
}

}  // namespace nearcast::simulator
