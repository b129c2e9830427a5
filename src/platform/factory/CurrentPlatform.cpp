// SPDX-License-Identifier: Apache-2.0
#include "platform/Platform.h"
#include "platform/factory/PlatformFactory.h"
#include "support/Mutex.h"

#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

/// The one choice of the process. Never destroyed: the manager that stands on it lives to the end of the process.
struct Choice {
    Mutex mutex;
    OpenedPlatform platform NEARCAST_GUARDED_BY(mutex);
    bool fixed NEARCAST_GUARDED_BY(mutex) = false;
};

Choice& choice() {
    static auto* const one = new Choice;
    return *one;
}

}  // namespace

PlatformServices& currentPlatform() {
    Choice& chosen = choice();
    const MutexLock lock(chosen.mutex);
    if (chosen.platform.services == nullptr) chosen.platform = openPlatform(PlatformOptions());
    chosen.fixed = true;
    return *chosen.platform.services;
}

void setCurrentPlatform(std::unique_ptr<PlatformServices> platform) {
    choosePlatform({nullptr, std::move(platform), nullptr, nullptr});
}

void choosePlatform(OpenedPlatform platform) {
    Choice& chosen = choice();
    const MutexLock lock(chosen.mutex);
    if (chosen.fixed) {
        throw std::logic_error("the platform is chosen before the manager is made, and the manager exists");
    }
    std::swap(chosen.platform, platform);
}

Drive* findDrive() {
    Choice& chosen = choice();
    const MutexLock lock(chosen.mutex);
    return chosen.platform.drive.get();
}

RadioMonitor* findMonitor() {
    Choice& chosen = choice();
    const MutexLock lock(chosen.mutex);
    return chosen.platform.monitor;
}

Drive& currentDrive() {
    if (Drive* drive = findDrive()) return *drive;
    throw std::logic_error("no platform has been chosen");
}

}  // namespace nearcast
