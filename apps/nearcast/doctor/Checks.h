// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// How serious a finding is for a working scan.
enum class Level {
    good,
    note,    ///< worth knowing
    remark,  ///< it may work worse than it could
    fault,   ///< it prevents a working scan
};

struct Finding {
    Level level = Level::good;
    std::string text;
    std::string advice;  ///< what to do about it; empty where nothing is needed
};

/// The ways in which a radio of this machine listens, as bits.
enum Way : unsigned {
    noWay = 0,     ///< recordings and the simulator, which need nothing of the machine
    byBluez = 1,   ///< `bluez`
    byUser = 2,    ///< `hci`: the controller for itself
    byBeside = 4,  ///< `hci?beside`
    anyWay = byBluez | byUser | byBeside,
};

/// What the findings of a check become for a radio that listens in none of the ways of the check.
enum class Elsewhere { note, nothing };

/// One check of the machine. Its findings count for radios that listen in one of its ways.
struct Check {
    std::string_view name;
    unsigned ways = anyWay;
    Elsewhere elsewhere = Elsewhere::note;
    std::vector<Finding> (*look)(const Machine& machine);
    bool hardware = false;  ///< an adapter that bluetoothd shows as powered on has passed it
};

/// All checks, from the hardware up.
std::span<const Check> checks();

/// The way in which a radio string listens. For `none` it is BlueZ's, which needs the fewest rights.
Way wayOf(std::string_view radio);

struct CheckedFinding {
    std::string_view check;
    Finding finding;
};
/// Does the checks for a radio that listens in this way; there are none where it needs nothing of the machine.
std::vector<CheckedFinding> examine(const Machine& machine, Way way);

// The checks by what they look at.
std::vector<Finding> checkKernel(const Machine& machine);
std::vector<Finding> checkDrivers(const Machine& machine);
std::vector<Finding> checkAdapters(const Machine& machine);
std::vector<Finding> checkSwitches(const Machine& machine);
std::vector<Finding> checkTaking(const Machine& machine);     ///< CAP_NET_ADMIN
std::vector<Finding> checkListening(const Machine& machine);  ///< CAP_NET_RAW
std::vector<Finding> checkUse(const Machine& machine);        ///< whether controllers can be taken
std::vector<Finding> checkBus(const Machine& machine);
std::vector<Finding> checkDaemon(const Machine& machine);
std::vector<Finding> checkPolicy(const Machine& machine);
std::vector<Finding> checkPower(const Machine& machine);
std::vector<Finding> checkLowEnergy(const Machine& machine);
std::vector<Finding> checkChoice(const Machine& machine);     ///< which adapter is best, and why
std::vector<Finding> checkAddresses(const Machine& machine);  ///< whether an address names one adapter
std::vector<Finding> checkMonitors(const Machine& machine);
std::vector<Finding> checkMending(const Machine& machine);  ///< what becomes of a scan that bluetoothd loses
std::vector<Finding> checkDiscovery(const Machine& machine);
std::vector<Finding> checkSomebodyDiscovers(const Machine& machine);

/// That another program uses the controller, so that it cannot be taken; nothing where it is free.
std::optional<Finding> inUse(const HciAdapter& adapter);

}  // namespace nearcast::cli
