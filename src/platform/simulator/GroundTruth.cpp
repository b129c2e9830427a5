// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/GroundTruth.h"

#include "platform/simulator/Geometry.h"

namespace nearcast::simulator {

std::optional<Nearest> nearestDongle(const Scene& scene, const Walk& walk, double seconds) {
    const Place user = walk.at(seconds).at;
    std::optional<Nearest> result;
    for (std::size_t index = 0; index < scene.dongles.size(); ++index) {
        const double metres = distance(user, scene.dongles[index].at);
        if (!result) {
            result = Nearest{index, metres, std::nullopt, 0};
        } else if (metres < result->distance) {
            result = Nearest{index, metres, result->dongle, result->distance};
        } else if (!result->second || metres < result->secondDistance) {
            result->second = index;
            result->secondDistance = metres;
        }
    }
    return result;
}

}  // namespace nearcast::simulator
