// SPDX-License-Identifier: Apache-2.0
#include "platform/factory/AutomaticRadio.h"

#include "platform/bluez/BluetoothdAtHand.h"

#include <algorithm>

namespace nearcast {

RadiosAtHand RadiosAtHand::ofThisMachine() {
    return {.bluetoothd = bluez::isBluetoothdAtHand(), .controllers = hciAdapters().adapters};
}

std::string automaticRadio(const RadiosAtHand& radios) {
    if (radios.bluetoothd) return "bluez";
    const auto usable = std::find_if(radios.controllers.begin(), radios.controllers.end(),
                                     [](const HciAdapter& controller) { return controller.lowEnergy != false; });
    if (usable == radios.controllers.end()) return "none";
    return "hci:" + std::to_string(usable->index);
}

}  // namespace nearcast
