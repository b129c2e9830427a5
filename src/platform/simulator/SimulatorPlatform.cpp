// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SimulatorPlatform.h"

#include "platform/simulator/SimulatorRadio.h"

#include <utility>

namespace nearcast::simulator {

SimulatorPlatform::SimulatorPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                                     Scene scene)
    : TimelinePlatform(console, JSON, std::move(pace)), scene_(std::move(scene)) {}

std::unique_ptr<CBCentralManager> SimulatorPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    return std::make_unique<SimulatorRadio>(delegate, *this, monitor(), timeline(), scene_);
}

}  // namespace nearcast::simulator
