// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"
#include "platform/simulator/SceneNode.h"

#include <nearcast/SettingRecord.h>

#include <string>
#include <string_view>

namespace nearcast::simulator {

/// Reads a scene from its JSON text. Members, units, ranges and defaults: docs/simulator.md.
/// @param name what errors call the text; a file's path
/// @throws SceneError naming the text and the path of the wrong member ("shop.json: $.dongles[2].txPower: expected a
///         number"), or the line and column where it is not JSON
Scene readScene(std::string_view text, std::string_view name);

/// Reads a scene from its values, as JSON gave them.
/// @throws SceneError as above
Scene sceneFrom(const SettingValue& value, std::string_view name);

/// Reads a scene file of at most 16 MiB.
/// @throws SceneError as above
/// @throws std::system_error naming the file when it cannot be opened or read
Scene readSceneFile(const std::string& path);

}  // namespace nearcast::simulator
