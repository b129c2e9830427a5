// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorOptions.h"

#include "platform/simulator/BuiltInScene.h"
#include "platform/simulator/SceneReader.h"
#include "platform/timeline/Speed.h"

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace nearcast::simulator {

namespace {

std::uint64_t parseSeed(const RadioString& radio, std::string_view text) {
    std::uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, seed);
    if (result.ec != std::errc() || result.ptr != end) {
        throw std::invalid_argument("radio '" + radio.text + "': seed '" + std::string(text) +
                                    "' is not a whole number from 0 to 18446744073709551615");
    }
    return seed;
}

}  // namespace

SimulatorOptions SimulatorOptions::from(const RadioString& radio) {
    SimulatorOptions options;
    options.sceneFile = radio.argument;
    if (const auto seed = radio.options.find("seed"); seed != radio.options.end()) {
        options.seed = parseSeed(radio, seed->second);
    }
    options.speed = parseSpeed(radio);
    return options;
}

Scene SimulatorOptions::scene() const {
    Scene scene = sceneFile.empty() ? readScene(builtInScene(), builtInSceneName) : readSceneFile(sceneFile);
    if (seed) scene.seed = *seed;
    return scene;
}

}  // namespace nearcast::simulator
