// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Interruption.h"
#include "common/Terminal.h"
#include "common/files/OwnInput.h"
#include "common/files/SettingsFile.h"
#include "common/radio/RadioOption.h"
#include "help/HelpText.h"
#include "platform/factory/PlatformFactory.h"
#include "watch/ScanStart.h"
#include "watch/TerminalSignals.h"
#include "watch/WatchSession.h"

#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <unistd.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace nearcast::cli {

namespace {

struct WatchArguments {
    std::string radio = "auto";
    std::string settings;
    std::optional<double> forSeconds;
    bool json = false;
};

bool wantsTable(const WatchArguments& arguments) { return !arguments.json && canDrawOver(STDOUT_FILENO); }

std::unique_ptr<WatchView> viewFor(const WatchArguments& arguments) {
    if (arguments.json) return makeJSONView();
    return wantsTable(arguments) ? makeTableView() : makeLinesView();
}

/// How long to let time pass until the next tick: while nothing happens, at once to where something does, if the
/// radio's time goes there at once.
double pauseOf(WatchSession& session) {
    const double pause = session.pause();
    if (pause <= WatchSession::busyTick) return pause;
    return std::max(pause, std::chrono::duration<double>(chosenPlatform()->drive->quiet()).count());
}

/// Lets time pass until the watch is over: the time is up, the recording has ended, or Ctrl-C.
void passTime(WatchSession& session, ScanStart& start, const Interruption& interruption,
              std::optional<double> forSeconds) {
    while (!interruption.happened() && !session.broken()) {
        start.look();
        const double pause = std::min(pauseOf(session), start.patience());
        const double left = forSeconds ? *forSeconds - session.seconds() : pause;
        if (left <= 0) return;
        const bool more = Platform::runFor(std::min(left, pause));
        session.tick();
        if (!more && !forSeconds) return;
    }
}

int watchWith(WatchSession& session, const Interruption& interruption, const WatchArguments& arguments,
              const std::shared_ptr<const Settings>& registry) {
    auto& manager = QXNearcastManager::sharedManager();
    if (registry) manager.setSettings(*registry);
    manager.setDelegate(session.delegate());
    ScanStart start(session, manager);
    passTime(session, start, interruption, arguments.forSeconds);
    manager.stopScan();
    manager.setDelegate(nullptr);
    session.end();
    if (!Platform::failure().empty()) return exitFailed;
    start.requireScan();
    return exitGood;
}

int watch(const WatchArguments& arguments) {
    refuseOwnInput("", {fileOfRadio(arguments.radio), arguments.settings});
    const auto registry = arguments.settings.empty() ? nullptr : registryOfFile(arguments.settings, "watch");
    // Never destroyed: the radio's thread may call it until the very end of the process.
    static auto& session = *new WatchSession(viewFor(arguments), [] { Platform::interrupt(); });
    std::optional<TerminalSignals> signals;  // its thread leaves all other signals alone
    if (wantsTable(arguments)) {
        signals.emplace([](const TerminalSignals::Take& take) { session.drawAnew(take); });
    }
    const Interruption interruption([] { Platform::interrupt(); });
    PlatformOptions options;
    options.radio = arguments.radio;
    options.ownLoop = true;
    options.console = [](std::string_view line) { session.console(line); };
    options.radioHealthChanged = [](const RadioHealth& health) { session.health(health); };
    session.hold();
    Platform::choose(options);
    session.begin();
    return watchWith(session, interruption, arguments, registry);
}

}  // namespace

void addWatch(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("watch", "Show which devices are near, and which have fallen silent");
    auto arguments = std::make_shared<WatchArguments>();
    addRadioOption(*command, arguments->radio);
    command
        ->add_option("--settings", arguments->settings,
                     "Registered devices, as the manager saves them; without it every dongle shows by its address")
        ->type_name("FILE");
    command->add_option("--for", arguments->forSeconds, "End after so many seconds of the radio's time")
        ->type_name("SECONDS")
        ->check(problemWithSeconds);
    command->add_flag("--json", arguments->json, "Print JSON Lines");
    setExamples(*command, {"nearcast watch --radio simulator",
                           "nearcast watch --radio replay:shop.jsonl --settings devices.json --json"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return watch(*arguments); }; });
}

}  // namespace nearcast::cli
