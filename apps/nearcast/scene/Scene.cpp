// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Words.h"
#include "common/files/OwnInput.h"
#include "common/files/SettingsFile.h"
#include "help/HelpText.h"
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"
#include "platform/simulator/Walk.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace nearcast::cli {

namespace {

struct SceneArguments {
    std::string file;
    bool settings = false;
    bool truth = false;
    std::optional<double> forSeconds;
};

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

/// Writes where the user of a scene really is: every half second a line of a truth file, for `nearcast evaluate`.
/// @param seconds how long; nothing: as long as the scene lasts, or else once the user's way
void writeTruth(const simulator::Scene& scene, std::optional<double> seconds) {
    const simulator::Walk walk(scene.user);
    const double end = seconds.value_or(scene.duration.value_or(walk.period()));
    for (std::uint64_t step = 0; static_cast<double>(step) * interval <= end; ++step) {
        const auto nearest = simulator::nearestDongle(scene, walk, static_cast<double>(step) * interval);
        if (nearest) writeOut(truthLine(scene, *nearest, step));
    }
}

/// @param file empty: the built-in scene
simulator::Scene sceneOf(const std::string& file) {
    simulator::SimulatorOptions options;
    options.sceneFile = file;
    return options.scene();
}

int printScene(const SceneArguments& arguments) {
    refuseOwnInput("", {arguments.file});
    const simulator::Scene scene = sceneOf(arguments.file);
    if (arguments.settings) {
        writeOut(settingsFileOf(simulator::simulatorSettings(scene)));
    } else if (arguments.truth) {
        writeTruth(scene, arguments.forSeconds);
    } else if (arguments.file.empty()) {
        writeOut(simulator::builtInScene());
    } else {
        writeOut(printable(arguments.file) + ": a scene with " + std::to_string(scene.dongles.size()) + " dongles\n");
    }
    finishOut();
    return exitGood;
}

}  // namespace

void addScene(CLI::App& application, Action& chosen) {
    auto* command =
        application.add_subcommand("scene", "Print the simulator's built-in scene, or check one of your own");
    auto arguments = std::make_shared<SceneArguments>();
    command->add_option("FILE", arguments->file, "A scene to check");
    auto* settings =
        command->add_flag("--settings", arguments->settings, "Print the scene's devices as a settings file for watch");
    auto* truth = command->add_flag("--truth", arguments->truth,
                                    "Print which dongle is nearest to the scene's user, as a truth file for evaluate");
    truth->excludes(settings);
    command->add_option("--for", arguments->forSeconds, "With --truth: for so many seconds, not once the user's way")
        ->type_name("SECONDS")
        ->check(problemWithSeconds)
        ->needs(truth);
    setExamples(*command, {"nearcast scene --settings > devices.json",
                           "nearcast scene kiosk.json --truth --for 600 > kiosk.truth.jsonl"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return printScene(*arguments); }; });
}

}  // namespace nearcast::cli
