// SPDX-License-Identifier: Apache-2.0
#include "platform/Platform.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/Consoles.h"
#include "platform/system/SystemClock.h"
#include "platform/timeline/TimelinePlatform.h"
#include "support/Mutex.h"

#include <chrono>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

const JSONSerialization serialization;

/// Stands where no platform could be made, so that there can be a manager that answers: nothing happens on it by
/// itself, and opening its radio fails for the same reason.
class FailedPlatform : public TimelinePlatform {
public:
    FailedPlatform(Console& console, std::exception_ptr why)
        : TimelinePlatform(console, serialization, nullptr), why_(std::move(why)) {}

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& /*delegate*/) override {
        std::rethrow_exception(why_);
    }
    [[nodiscard]] NSDate date() const override { return NSDate(SystemClock::now()); }
    void usleep(std::chrono::microseconds duration) override { SystemClock::sleepUntil(SystemClock::now() + duration); }

private:
    const std::exception_ptr why_;
};

OpenedPlatform openDefault() {
    try {
        return openPlatform(PlatformOptions());
    } catch (const std::exception&) {
        OpenedPlatform opened;
        opened.console = std::make_unique<StandardErrorConsole>();
        auto platform = std::make_unique<FailedPlatform>(*opened.console, std::current_exception());
        opened.drive = std::make_unique<TimelineDrive>(*platform);
        opened.monitor = &platform->monitor();
        opened.services = std::move(platform);
        return opened;
    }
}

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
    if (!chosen.platform) chosen.platform = std::make_shared<const OpenedPlatform>(openDefault());
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
