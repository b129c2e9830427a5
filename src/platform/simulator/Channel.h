// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Random.h"
#include "platform/simulator/Walk.h"

#include <array>
#include <cstdint>
#include <optional>

namespace nearcast::simulator {

/// The way of one dongle's signal to the user's radio: what part of it arrives, and whether it is heard.
///
/// Everything left to chance comes from the dongle's own random stream, and every advertisement takes the same amount
/// from it, heard or not: what happens to one dongle, or to one advertisement, changes no other.
class Channel {
public:
    /// @param scene outlives the channel, and so does `dongle`, one of the scene's
    Channel(const Scene& scene, const Dongle& dongle, Random& random);

    /// The strength in dBm that the place alone decides: power, distance, walls, body and the shadowing of the place.
    [[nodiscard]] double mean(const Stance& stance) const;

    /// What the radio makes of an advertisement.
    /// @param seconds since the scene's start; never less than at the call before
    /// @return whole dBm, 127 where the radio has no reading, nothing where the advertisement is lost
    [[nodiscard]] std::optional<std::int32_t> receive(double seconds, const Stance& stance, Random& random);

private:
    struct Wave {
        double x = 0, y = 0, phase = 0;
    };

    [[nodiscard]] double placeShadowing(const Place& place) const;
    [[nodiscard]] double echo(double seconds, const Place& place) const;
    double drift(double seconds, double normal);
    [[nodiscard]] bool lost(double strength, double chance) const;

    const Scene& scene_;
    const Dongle& dongle_;
    std::array<Wave, 12> waves_;
    double detour_ = 0;       ///< metres that the strongest reflection is longer than the direct path
    double detourAngle_ = 0;  ///< the direction in which walking makes it longer
    double drift_ = 0;        ///< in standard deviations
    double driftAt_ = 0;      ///< seconds
};

/// dB that the user's body takes from a dongle in that direction: nothing before the user, all of `bodyLoss` behind.
[[nodiscard]] double bodyLoss(const User& user, const Stance& stance, const Place& dongle);

/// dB by which a signal of that distance in metres is weaker than at 1 m, and what is lost up to there.
[[nodiscard]] double distanceLoss(const Air& air, double metres);

}  // namespace nearcast::simulator
