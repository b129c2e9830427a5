// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

#include <optional>
#include <string>
#include <vector>

// What can be told of a machine out of what it shows.

namespace nearcast::cli {

/// A switch of the kernel's rfkill that belongs to Bluetooth.
struct RadioSwitch {
    std::string name;   ///< "hci0", or that of a switch of the whole machine
    bool soft = false;  ///< blocked, until somebody unblocks it
    bool hard = false;  ///< switched off by a switch or a key, or in the firmware
    [[nodiscard]] bool blocked() const { return soft || hard; }
};
std::vector<RadioSwitch> bluetoothSwitches(const Machine& machine);

/// The bluetoothd that owns its name on the bus.
struct Daemon {
    std::optional<std::string> version;  ///< nothing: it stands in none of the usual places
    bool experimental = false;           ///< it was started with -E
};
Daemon daemonOf(const Machine& machine);

/// Whether it can listen to Low Energy; one of which bluetoothd does not say so may.
bool hasLowEnergy(const BusAdapter& adapter);

/// The adapter that the radio `bluez` takes when it begins; null where bluetoothd shows none.
const BusAdapter* bestAdapter(const Machine& machine);

/// The radio string that `auto` stands for on this machine.
std::string automaticRadio(const Machine& machine);

}  // namespace nearcast::cli
