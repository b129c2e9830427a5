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
    std::shared_ptr<const OpenedPlatform> platform NEARCAST_GUARDED_BY(mutex);
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
    if (!chosen.platform) chosen.platform = std::make_shared<const OpenedPlatform>(openPlatform(PlatformOptions()));
    chosen.fixed = true;
    return *chosen.platform->services;
}

void setCurrentPlatform(std::unique_ptr<PlatformServices> platform) {
    choosePlatform({nullptr, std::move(platform), nullptr, nullptr});
}

void choosePlatform(OpenedPlatform platform) {
    auto next = std::make_shared<const OpenedPlatform>(std::move(platform));
    {
        Choice& chosen = choice();
        const MutexLock lock(chosen.mutex);
        if (chosen.fixed) {
            throw std::logic_error("the platform is chosen before the manager is made, and the manager exists");
        }
        std::swap(chosen.platform, next);
    }
    // A run of the replaced one may be under way, and nothing else could end it any more.
    if (next && next->drive) next->drive->interrupt();
}

std::shared_ptr<const OpenedPlatform> chosenPlatform() {
    Choice& chosen = choice();
    const MutexLock lock(chosen.mutex);
    return chosen.platform;
}

}  // namespace nearcast
