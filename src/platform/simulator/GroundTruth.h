// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"
#include "platform/simulator/Walk.h"

#include <cstddef>
#include <optional>

namespace nearcast::simulator {

/// The dongles that the user really stands next to, by their places in the scene's list.
struct Nearest {
    std::size_t dongle = 0;
    double distance = 0;  ///< metres
    std::optional<std::size_t> second;
    double secondDistance = 0;  ///< metres; of `second` alone
};

/// Which dongle is nearest to the user, as the crow flies; walls and switches do not count. Of two at one distance the
/// first in the scene.
/// @param walk    the user's way through the scene
/// @param seconds since the scene's start
/// @return nothing in a scene without dongles
[[nodiscard]] std::optional<Nearest> nearestDongle(const Scene& scene, const Walk& walk, double seconds);

}  // namespace nearcast::simulator
