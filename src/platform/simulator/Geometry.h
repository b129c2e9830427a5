// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"

namespace nearcast::simulator {

/// Metres between two places.
[[nodiscard]] double distance(const Place& one, const Place& other);

/// The direction from one place to another in radians, 0 along x, counter-clockwise; 0 where both are the same.
[[nodiscard]] double direction(const Place& from, const Place& to);

/// The place a part (0 to 1) of the way from one to another.
[[nodiscard]] Place between(const Place& from, const Place& to, double part);

/// How often the straight path from one place to another crosses a wall. A path through the point where two pieces of
/// the wall meet crosses it once; one that runs along the wall does not cross it.
[[nodiscard]] int crossings(const Wall& wall, const Place& from, const Place& to);

/// dB that all walls together take from the straight path between two places.
[[nodiscard]] double wallLoss(const Floor& floor, const Place& from, const Place& to);

}  // namespace nearcast::simulator
