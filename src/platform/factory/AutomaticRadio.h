// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciAdapters.h"

#include <string>
#include <vector>

namespace nearcast {

/// What `auto` has to choose from.
struct AvailableRadios {
    bool bluetoothd = false;                   ///< the system bus has it, running or to be started
    std::vector<hci::HciAdapter> controllers;  ///< of the kernel

    /// Those of this machine. It waits for the system bus.
    static AvailableRadios ofThisMachine();
};

/// The radio string that `auto` stands for: `bluez` where there is bluetoothd, or else the first controller that may
/// have Bluetooth Low Energy, `hci:N`, or else `none`.
std::string automaticRadio(const AvailableRadios& radios);

}  // namespace nearcast
