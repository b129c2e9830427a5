// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace nearcast::simulator {

/// The scene of the radio `simulator`: a restaurant with six devices and a waiter. JSON, as `readScene` reads it.
std::string_view builtInScene();

/// What errors call it.
inline constexpr std::string_view builtInSceneName = "the built-in scene";

}  // namespace nearcast::simulator
