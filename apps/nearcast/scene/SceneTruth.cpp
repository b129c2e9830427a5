// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneTruth.h"

#include "platform/simulator/GroundTruth.h"
#include "platform/simulator/Walk.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace nearcast::cli {

namespace {

constexpr double interval = 0.5;

std::string metres(double value) {
    std::array<char, 32> text{};  // a floor has 10000 m at most
    std::snprintf(text.data(), text.size(), "%.2f", value);
    return text.data();
}

std::string truthLine(const simulator::Scene& scene, const simulator::Nearest& nearest, std::uint64_t step) {
    std::string line = "{\"at\": " + std::to_string(step / 2) + (step % 2 == 0 ? ".0" : ".5");
    line += ", \"truth\": \"" + scene.dongles[nearest.dongle].address + "\", \"distance\": " + metres(nearest.distance);
    if (nearest.second) {
        line += ", \"second\": \"" + scene.dongles[*nearest.second].address +
                "\", \"secondDistance\": " + metres(nearest.secondDistance);
    }
    return line + "}\n";
}

}  // namespace

void writeTruth(const simulator::Scene& scene, std::optional<double> seconds,
                const std::function<void(std::string_view)>& write) {
    const simulator::Walk walk(scene.user);
    const double end = seconds.value_or(scene.duration.value_or(walk.period()));
    for (std::uint64_t step = 0; static_cast<double>(step) * interval <= end; ++step) {
        const auto nearest = simulator::nearestDongle(scene, walk, static_cast<double>(step) * interval);
        if (nearest) write(truthLine(scene, *nearest, step));
    }
}

}  // namespace nearcast::cli
