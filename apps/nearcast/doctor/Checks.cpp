// SPDX-License-Identifier: Apache-2.0
#include "doctor/Checks.h"

#include <algorithm>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr Check all[] = {
    {"kernel", anyWay, Elsewhere::note, checkKernel, true},
    {"drivers", anyWay, Elsewhere::note, checkDrivers, true},
    {"adapters", anyWay, Elsewhere::note, checkAdapters, true},
    {"rfkill", anyWay, Elsewhere::note, checkSwitches, true},
    {"capabilities", byUser, Elsewhere::note, checkTaking},
    {"capabilities", byBeside, Elsewhere::note, checkListening},
    {"controllers", byUser, Elsewhere::nothing, checkUse},
    {"bus", byBluez, Elsewhere::note, checkBus},
    {"bluetoothd", byBluez, Elsewhere::note, checkDaemon},
    {"policy", byBluez, Elsewhere::note, checkPolicy},
    {"power", byBluez, Elsewhere::note, checkPower},
    {"low energy", byBluez, Elsewhere::note, checkLowEnergy},
    {"choice", byBluez, Elsewhere::nothing, checkChoice},
    {"addresses", anyWay, Elsewhere::note, checkAddresses},
    {"monitors", byBluez, Elsewhere::nothing, checkMonitors},
    {"mending", byBluez, Elsewhere::nothing, checkMending},
    {"discovery", byBluez, Elsewhere::nothing, checkDiscovery},
    {"discovery", byBeside, Elsewhere::nothing, checkSomebodyDiscovers},
};

/// An adapter that bluetoothd shows powered on has a kernel and a driver below it, whatever this process sees of them:
/// in a container it sees nothing.
bool bluezHasHardware(const Machine& machine) {
    const auto& adapters = machine.bus().adapters;
    return std::any_of(adapters.begin(), adapters.end(), [](const BusAdapter& adapter) { return adapter.powered; });
}

}  // namespace

std::span<const Check> checks() { return all; }

Way wayOf(std::string_view radio) {
    const auto question = std::min(radio.size(), radio.rfind('?'));
    const std::string_view body = radio.substr(0, question);
    const std::string_view kind = body.substr(0, body.find(':'));
    if (kind == "bluez" || kind == "none") return byBluez;
    if (kind != "hci") return noWay;
    return radio.substr(question).find("beside") != std::string_view::npos ? byBeside : byUser;
}

std::vector<CheckedFinding> examine(const Machine& machine, Way way) {
    std::vector<CheckedFinding> findings;
    if (way == noWay) return findings;
    const bool hardwareCounts = way != byBluez || !bluezHasHardware(machine);
    for (const Check& check : all) {
        const bool onTheWay = (check.ways & way) != 0;
        const bool counts = onTheWay && (hardwareCounts || !check.hardware);
        if (!onTheWay && check.elsewhere == Elsewhere::nothing) continue;
        for (Finding& finding : check.look(machine)) {
            if (!counts && finding.level != Level::good) finding.level = Level::note;
            findings.push_back({check.name, std::move(finding)});
        }
    }
    return findings;
}

}  // namespace nearcast::cli
