// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace nearcast::simulator {

/// Where the user is and looks.
struct Stance {
    Place at;
    double facing = 0;  ///< radians, 0 along x, counter-clockwise
};

/// The user's way through the shop as a function of time. Immutable, so good for several threads.
class Walk {
public:
    explicit Walk(const User& user);

    /// @param seconds since the scene's start, 0 or more. At the moment when a pause ends the user already faces where
    ///                the next leg goes.
    [[nodiscard]] Stance at(double seconds) const;

    /// Seconds that the whole way takes, with the way back to its beginning where it is a loop.
    [[nodiscard]] double period() const noexcept { return period_; }

private:
    struct Stage {
        double begin = 0;  ///< seconds
        double duration = 0;
        Place from;
        Place to;
        double facing = 0;
    };

    void add(const Place& from, const Place& to, double duration, double facing);
    [[nodiscard]] static double arrivalAtFirst(const User& user);

    std::vector<Stage> stages_;
    Stance end_;  ///< where the user stays when the way is over
    double period_ = 0;
    bool loop_;
};

/// The dongles that the user really stands next to, by their places in the scene's list.
struct Nearest {
    std::size_t dongle = 0;
    double distance = 0;  ///< metres
    std::optional<std::size_t> second;
    double secondDistance = 0;  ///< metres; of `second` alone
};

/// Which dongle is nearest to the user, in a straight line; walls and switches do not count. Of two at one distance the
/// first in the scene.
/// @param walk    the user's way through the scene
/// @param seconds since the scene's start
/// @return nothing in a scene without dongles
[[nodiscard]] std::optional<Nearest> nearestDongle(const Scene& scene, const Walk& walk, double seconds);

}  // namespace nearcast::simulator
