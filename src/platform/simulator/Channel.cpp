// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Channel.h"

#include "platform/simulator/Geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace nearcast::simulator {

namespace {

constexpr double turn = 2 * std::numbers::pi;
/// Nearer than this the loss grows no smaller: the far-field formula ends, and nobody holds a phone into a printer.
constexpr double nearest = 0.2;  // metres
/// The width in dB of the step from hearing nearly all to hearing nearly nothing.
constexpr double sensitivityStep = 1.5;
/// What a controller can report (Core Specification, Volume 4, Part E, 7.7.65.2), 127 apart.
constexpr double weakest = -127;
constexpr double strongest = 20;
constexpr std::int32_t noReading = 127;
/// Waves per metre of the advertising channels 37, 38 and 39 (2402, 2426 and 2480 MHz).
constexpr std::array<double, 3> wavesPerMetre = {2402e6 / 299792458, 2426e6 / 299792458, 2480e6 / 299792458};

double decibels(double power) { return 10 * std::log10(std::max(power, 1e-12)); }

}  // namespace

double distanceLoss(const Air& air, double metres) {
    return air.lossAtOneMetre + 10 * air.exponent * std::log10(std::max(metres, nearest));
}

double bodyLoss(const User& user, const Stance& stance, const Place& dongle) {
    if (distance(stance.at, dongle) <= 0) return 0;
    const double behind = (1 - std::cos(direction(stance.at, dongle) - stance.facing)) / 2;  // 0 before, 1 behind
    return user.bodyLoss * behind * behind;
}

Channel::Channel(const Scene& scene, const Dongle& dongle, Random& random) : scene_(scene), dongle_(dongle) {
    for (Wave& wave : waves_) {
        const auto [x, y] = random.normals();
        wave = {x / scene.air.placeDistance, y / scene.air.placeDistance, turn * random.uniform()};
    }
    detour_ = 1 + 5 * random.uniform();
    detourAngle_ = turn * random.uniform();
    drift_ = random.normals().first;
}

double Channel::placeShadowing(const Place& place) const {
    double sum = 0;
    for (const Wave& wave : waves_) sum += std::cos(wave.x * place.x + wave.y * place.y + wave.phase);
    return scene_.air.placeDeviation * sum * std::sqrt(2.0 / static_cast<double>(waves_.size()));
}

double Channel::mean(const Stance& stance) const {
    return dongle_.txPower - distanceLoss(scene_.air, distance(stance.at, dongle_.at)) -
           wallLoss(scene_.floor, stance.at, dongle_.at) - bodyLoss(scene_.user, stance, dongle_.at) +
           placeShadowing(stance.at);
}

double Channel::echo(double seconds, const Place& place) const {
    const double dwell = std::floor(seconds / scene_.receiver.channelTime);
    const auto channel = static_cast<std::size_t>(std::fmod(dwell, 3));
    const double detour = detour_ + place.x * std::cos(detourAngle_) + place.y * std::sin(detourAngle_);
    const double amplitude = scene_.air.echo;
    const double phase = turn * std::fmod(detour * wavesPerMetre[channel], 1);
    return decibels(1 + amplitude * amplitude + 2 * amplitude * std::cos(phase));
}

double Channel::drift(double seconds, double normal) {
    const double alike = std::exp(-(seconds - driftAt_) / scene_.air.driftTime);
    drift_ = alike * drift_ + std::sqrt(1 - alike * alike) * normal;
    driftAt_ = seconds;
    return scene_.air.driftDeviation * drift_;
}

bool Channel::lost(double strength, double chance) const {
    const double tooWeak = 1 / (1 + std::exp((strength - scene_.receiver.sensitivity) / sensitivityStep));
    return chance >= (1 - scene_.air.loss) * (1 - tooWeak);
}

std::optional<std::int32_t> Channel::receive(double seconds, const Stance& stance, Random& random) {
    const auto [slow, fast] = random.normals();
    const double strength =
        mean(stance) + drift(seconds, slow) + echo(seconds, stance.at) + scene_.air.jitterDeviation * fast;
    const double chance = random.uniform();
    const bool readable = random.uniform() >= scene_.receiver.unreadable;
    if (lost(strength, chance)) return std::nullopt;
    if (!readable) return noReading;
    return static_cast<std::int32_t>(std::lround(std::clamp(strength, weakest, strongest)));
}

}  // namespace nearcast::simulator
