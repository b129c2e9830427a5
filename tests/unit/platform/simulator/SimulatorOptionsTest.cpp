// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorOptions.h"

#include "platform/simulator/SceneNode.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>

namespace nearcast::simulator {

namespace {

SimulatorOptions optionsOf(std::string_view radio) { return SimulatorOptions::from(RadioString::parse(radio)); }

std::string errorOf(std::string_view radio) {
    try {
        optionsOf(radio);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "nothing";
}

TEST(SimulatorOptions, TakeTheBuiltInSceneAtItsOwnSpeedAndSeed) {
    const SimulatorOptions options = optionsOf("simulator");
    EXPECT_EQ(options.sceneFile, "");
    EXPECT_EQ(options.speed, 1);
    EXPECT_FALSE(options.seed);
    EXPECT_EQ(options.scene().name, "Restaurant");
    EXPECT_EQ(options.scene().seed, 1U);
}

TEST(SimulatorOptions, ReadTheirOptions) {
    const SimulatorOptions options = optionsOf("simulator?seed=42&speed=2.5");
    EXPECT_EQ(options.seed, 42U);
    EXPECT_EQ(options.scene().seed, 42U);
    EXPECT_EQ(options.speed, 2.5);
    EXPECT_FALSE(optionsOf("simulator?speed=max").speed);
    EXPECT_EQ(optionsOf("simulator?seed=18446744073709551615").seed, 18446744073709551615U);
    EXPECT_EQ(optionsOf("simulator?seed=0").seed, 0U);
}

TEST(SimulatorOptions, OpenASceneFile) {
    const SimulatorOptions options = optionsOf("simulator:/nowhere/shop.json?speed=max");
    EXPECT_EQ(options.sceneFile, "/nowhere/shop.json");
    EXPECT_THROW(static_cast<void>(options.scene()), std::system_error);
}

TEST(SimulatorOptions, SayWhatIsWrongWithASeed) {
    for (const char* seed : {"", "-1", "1.5", "x", "1x", " 1", "+1", "18446744073709551616"}) {
        const std::string radio = "simulator?seed=" + std::string(seed);
        EXPECT_EQ(errorOf(radio),
                  "radio '" + radio + "': seed '" + seed + "' is not a whole number from 0 to 18446744073709551615");
    }
}

TEST(SimulatorOptions, RefuseASpeedThatIsNone) {
    for (const char* speed : {"", "0", "-1", "fast", "1x", "inf", "nan", "1e999", "MAX"}) {
        const std::string radio = "simulator?speed=" + std::string(speed);
        EXPECT_NE(errorOf(radio).find("radio '" + radio + "': speed"), std::string::npos) << errorOf(radio);
    }
}

}  // namespace

}  // namespace nearcast::simulator
