// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/RadioString.h"
#include "platform/simulator/Scene.h"

#include <nearcast/SettingRecord.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::simulator {

/// What a radio string of the kind `simulator` asks for: `simulator`, `simulator:SCENE.json`, with `seed=N` and
/// `speed=X`.
struct SimulatorOptions {
    std::string sceneFile;              ///< empty: the built-in scene
    std::optional<std::uint64_t> seed;  ///< absent: the scene's own
    std::optional<double> speed = 1;    ///< simulated seconds per second; absent: "max", as fast as it goes

    /// @throws std::invalid_argument naming the radio string, the option and what is wrong with it
    static SimulatorOptions from(const RadioString& radio);

    /// The scene asked for, with the seed asked for.
    /// @throws SceneError when the file is no scene
    /// @throws std::system_error when it cannot be opened or read
    [[nodiscard]] Scene scene() const;
};

/// The scene of the radio `simulator`: a restaurant with six devices and a waiter. JSON, as `readScene` reads it.
std::string_view builtInScene();

/// What errors call it.
inline constexpr std::string_view builtInSceneName = "the built-in scene";

/// The scene's devices as a registry, each record as registration would have written it. Dongles without a device are
/// not registered.
[[nodiscard]] Settings simulatorSettings(const Scene& scene);

}  // namespace nearcast::simulator
