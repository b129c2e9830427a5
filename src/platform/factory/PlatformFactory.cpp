// SPDX-License-Identifier: Apache-2.0
#include "platform/factory/PlatformFactory.h"

#include "platform/bluez/BluezAdapterService.h"
#include "platform/bluez/BluezRadio.h"
#include "platform/factory/AutomaticRadio.h"
#include "platform/hci/HciKernel.h"
#include "platform/hci/HciRadio.h"
#include "platform/json/JSONSerialization.h"
#include "platform/radio/NoRadio.h"
#include "platform/radio/RadioString.h"
#include "platform/replay/ReplayPlatform.h"
#include "platform/simulator/SimulatorOptions.h"
#include "platform/simulator/SimulatorPlatform.h"
#include "platform/system/Consoles.h"
#include "platform/system/RealPace.h"
#include "platform/system/SystemPlatform.h"
#include "platform/timeline/TimelinePlatform.h"

#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

const JSONSerialization JSON;

std::unique_ptr<Pace> paceFor(std::optional<double> speed, const RadioString& radio, const PlatformOptions& options) {
    if (speed) return std::make_unique<RealPace>(*speed);
    // On a thread of its own it would run ahead of the calls that it is meant to serve.
    if (!options.ownLoop) {
        throw std::invalid_argument("radio '" + radio.text +
                                    "': speed=max is for applications that run it on their own loop");
    }
    return nullptr;
}

/// A platform with a time of its own runs on the application's thread, or else on one of its own.
template <class TimelineBackEnd>
void install(OpenedPlatform& opened, std::unique_ptr<TimelineBackEnd> platform, const PlatformOptions& options) {
    if (!options.ownLoop) platform->timeline().driveFromThread();
    opened.drive = std::make_unique<TimelineDrive>(*platform);
    opened.monitor = &platform->monitor();
    opened.services = std::move(platform);
}

void openReplay(OpenedPlatform& opened, const RadioString& radio, const PlatformOptions& options) {
    auto replay = replay::ReplayOptions::parse(radio);
    auto pace = paceFor(replay.speed, radio, options);
    install(opened, std::make_unique<replay::ReplayPlatform>(*opened.console, JSON, std::move(pace), std::move(replay)),
            options);
}

void openSimulator(OpenedPlatform& opened, const RadioString& radio, const PlatformOptions& options) {
    using namespace simulator;
    const auto simulation = SimulatorOptions::from(radio);
    auto pace = paceFor(simulation.speed, radio, options);
    auto platform = std::make_unique<SimulatorPlatform>(*opened.console, JSON, std::move(pace), simulation.scene());
    install(opened, std::move(platform), options);
}

using OpenedRadio = std::unique_ptr<CBCentralManager>;

constexpr const char* nothingFound =
    "there is no Bluetooth radio: no bluetoothd on the system bus, and no controller with Low Energy";

/// Opens a radio of this machine.
/// @param without why there is none, where that is the radio
OpenedRadio openRadio(const RadioString& radio, const char* without, CBCentralManagerDelegate& delegate,
                      Console& console, RadioMonitor& monitor) {
    if (radio.kind == "bluez") {
        return std::make_unique<bluez::ThreadedBluezRadio>(delegate, console, monitor, radio.argument);
    }
    if (radio.kind == "hci") {
        hci::HciTarget target = hci::parseHciTarget(radio);
        target.program = hci::ownProgram();
        return std::make_unique<hci::ThreadedHciRadio>(delegate, console, monitor,
                                                       std::make_unique<hci::KernelHciPort>(),
                                                       std::make_unique<bluez::BluezAdapterService>(), target);
    }
    return std::make_unique<NoRadio>(delegate, console, monitor, without);
}

/// What `auto` means on this machine at this moment, said on the console where it is not what one expects.
RadioString chooseRadio(Console& console) {
    const std::string chosen = automaticRadio(AvailableRadios::ofThisMachine());
    if (chosen == "none") {
        console.NSLog("There is no Bluetooth radio on this machine; going on without one.");
    } else if (chosen != "bluez") {
        console.NSLog("There is no bluetoothd on the system bus; taking the radio " + chosen + ".");
    }
    return RadioString::parse(chosen);
}

void openSystem(OpenedPlatform& opened, const RadioString& radio, const PlatformOptions& options) {
    Console& console = *opened.console;
    if (radio.kind == "hci") hci::parseHciTarget(radio);  // what is wrong with it is said now
    const auto open = [&console, radio](CBCentralManagerDelegate& delegate, RadioMonitor& monitor) {
        if (radio.kind != "auto") return openRadio(radio, "there is no radio", delegate, console, monitor);
        return openRadio(chooseRadio(console), nothingFound, delegate, console, monitor);
    };
    const auto loop = options.ownLoop ? TimerService::Loop::application : TimerService::Loop::ownThread;
    auto platform = std::make_unique<SystemPlatform>(console, JSON, open, loop, options.timerExecutor);
    opened.drive = std::make_unique<SystemDrive>(*platform);
    opened.monitor = &platform->monitor();
    opened.services = std::move(platform);
}

}  // namespace

OpenedPlatform openPlatform(const PlatformOptions& options) {
    const RadioString radio = RadioString::parse(options.radio);
    OpenedPlatform opened;
    if (options.console) {
        opened.console = std::make_unique<CallbackConsole>(options.console);
    } else {
        opened.console = std::make_unique<StandardErrorConsole>();
    }
    if (radio.kind == "replay") {
        openReplay(opened, radio, options);
    } else if (radio.kind == "simulator") {
        openSimulator(opened, radio, options);
    } else {
        openSystem(opened, radio, options);
    }
    opened.monitor->setHealthChanged(options.radioHealthChanged);
    return opened;
}

}  // namespace nearcast
