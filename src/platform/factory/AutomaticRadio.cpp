// SPDX-License-Identifier: Apache-2.0
#include "platform/factory/AutomaticRadio.h"

#include "platform/bluez/Availability.h"

#include <algorithm>

namespace nearcast {

AvailableRadios AvailableRadios::ofThisMachine() {
    return {.bluetoothd = bluez::isBluetoothdAvailable(), .controllers = hci::hciAdapters().adapters};
}

std::string automaticRadio(const AvailableRadios& radios) {
    if (radios.bluetoothd) return "bluez";
    const auto usable = std::find_if(radios.controllers.begin(), radios.controllers.end(),
                                     [](const hci::HciAdapter& controller) { return controller.lowEnergy != false; });
    if (usable == radios.controllers.end()) return "none";
    return "hci:" + std::to_string(usable->index);
}

}  // namespace nearcast
