// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"
#include "platform/simulator/SceneNode.h"

#include <string_view>
#include <vector>

/// Parts of the scene's reader. All throw `SceneError` with the path of the wrong member.
namespace nearcast::simulator {

/// A list of two numbers, on the floor.
Place readPlace(const SceneNode& node, const Floor& floor);

/// Reads a number that may be left out; then `into` keeps its default.
void readNumber(const SceneNode& node, std::string_view name, const Range& range, double& into);

/// The scene's dongles. No two have one address, no two devices one port name.
std::vector<Dongle> readDongles(const SceneNode& node, const Floor& floor);

}  // namespace nearcast::simulator
