// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// How much a finding says about a working scan.
enum class Level {
    good,
    note,    ///< worth knowing
    remark,  ///< it may work worse than it could
    fault,   ///< it stands between the user and a working scan
};

struct Finding {
    Level level = Level::good;
    std::string text;
    std::string advice;  ///< what to do; empty where there is nothing to be done
};

/// The ways on which a radio of this machine listens, as bits.
enum Way : unsigned {
    noWay = 0,     ///< recordings and the simulator, which need nothing of the machine
    byBluez = 1,   ///< `bluez`
    byUser = 2,    ///< `hci`: the controller for itself
    byBeside = 4,  ///< `hci?beside`
    anyWay = byBluez | byUser | byBeside,
};

/// What a check is worth to a radio that listens on a way that is none of the check's.
enum class Elsewhere { note, nothing };

/// One thing that is looked at. What is wrong with it counts on its ways only.
struct Check {
    std::string_view name;
    unsigned ways = anyWay;
    Elsewhere elsewhere = Elsewhere::note;
    std::vector<Finding> (*look)(const Machine& machine);
    bool hardware = false;  ///< about what an adapter that bluetoothd shows powered on must have
};

/// All of them, in the order from the hardware up.
std::span<const Check> checks();

/// The way that a radio string takes. Where there is no radio at all it is BlueZ's, which asks least of its user.
Way wayOf(std::string_view radio);

struct CheckedFinding {
    std::string_view check;
    Finding finding;
};
/// Does the checks for a radio that listens on this way; where it needs nothing of the machine there are none.
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
std::vector<Finding> checkMonitors(const Machine& machine);
std::vector<Finding> checkDiscovery(const Machine& machine);
std::vector<Finding> checkSomebodyDiscovers(const Machine& machine);

/// Why a controller cannot be taken although everything else is right; nothing: it can be.
std::optional<Finding> inUse(const HciAdapter& adapter);

}  // namespace nearcast::cli
