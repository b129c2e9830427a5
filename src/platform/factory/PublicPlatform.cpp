// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>

#include "platform/Platform.h"
#include "platform/factory/PlatformFactory.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace nearcast {

void Platform::choose(const PlatformOptions& options) { choosePlatform(openPlatform(options)); }

int Platform::descriptor() { return currentDrive().descriptor(); }

void Platform::dispatch() { currentDrive().dispatch(); }

bool Platform::runFor(double seconds) {
    constexpr double longest = 1e9;
    const double bounded = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, longest);
    return currentDrive().runFor(std::chrono::microseconds(std::llround(bounded * 1e6)));
}

void Platform::interrupt() {
    if (Drive* drive = findDrive()) drive->interrupt();
}

std::string Platform::failure() { return currentDrive().failure(); }

RadioHealth Platform::radioHealth() {
    if (const RadioMonitor* monitor = findMonitor()) return monitor->health();
    RadioHealth health;
    health.why = "no radio has been opened";
    return health;
}

double Platform::now() { return std::chrono::duration<double>(currentPlatform().date().sinceStart()).count(); }

}  // namespace nearcast
