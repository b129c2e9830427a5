// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace nearcast::simulator {

namespace {

TEST(DocumentedScene, IsReadAsItStandsInTheManual) {
    std::ifstream file(NEARCAST_TEST_SOURCE_DIR "/../docs/simulator.md");
    std::stringstream manual;
    manual << file.rdbuf();
    const std::string text = manual.str();
    const std::string fence = "```json\n";
    const auto begin = text.find(fence);
    ASSERT_NE(begin, std::string::npos) << "docs/simulator.md has no scene";
    const auto end = text.find("```", begin + fence.size());
    const Scene scene = readScene(text.substr(begin + fence.size(), end - begin - fence.size()), "docs/simulator.md");
    EXPECT_EQ(scene.name, "Kiosk");
    EXPECT_EQ(scene.dongles.size(), 2U);
    EXPECT_EQ(scene.user.path.size(), 3U);
}

}  // namespace

}  // namespace nearcast::simulator
