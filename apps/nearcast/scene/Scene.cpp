// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "scene/SceneTruth.h"
#include "common/Seconds.h"
#include "platform/simulator/BuiltInScene.h"
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"
#include "platform/simulator/SimulatorSettings.h"
#include "common/SettingsFile.h"

#include <CLI/CLI.hpp>
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

int scene(const SceneArguments& arguments) {
    simulator::SimulatorOptions options;
    options.sceneFile = arguments.file;
    try {
        const simulator::Scene read = options.scene();
        if (arguments.settings) {
            writeOut(settingsFileOf(simulator::simulatorSettings(read)));
        } else if (arguments.truth) {
            writeTruth(read, arguments.forSeconds, writeOut);
        } else if (arguments.file.empty()) {
            writeOut(simulator::builtInScene());
        } else {
            writeOut(arguments.file + ": a scene with " + std::to_string(read.dongles.size()) + " dongles\n");
        }
    } catch (const simulator::SceneError& error) {
        return complain("scene", error.what(), exitUsage);
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
        ->check(isTime)
        ->needs(truth);
    command->callback([arguments, &chosen] { chosen = [arguments] { return scene(*arguments); }; });
}

}  // namespace nearcast::cli
