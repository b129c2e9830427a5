// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"

#include <functional>
#include <optional>
#include <string_view>

namespace nearcast::cli {

/// Writes where the user of a scene really is: every half second a line of a truth file, for `nearcast evaluate`.
/// @param seconds how long; nothing: as long as the scene lasts, or else once the user's way
void writeTruth(const simulator::Scene& scene, std::optional<double> seconds,
                const std::function<void(std::string_view)>& write);

}  // namespace nearcast::cli
