// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBCentralManager.h"
#include "platform/Guarded.h"
#include "platform/NSDate.h"
#include "platform/NSJSONSerialization.h"
#include "platform/NSLog.h"
#include "platform/NSTimer.h"

#include <chrono>
#include <memory>

namespace nearcast {

/// Everything that the manager stands on, as one set whose parts fit each other: the timers run on the same clock that
/// tells the date. It lives as long as the manager.
class PlatformServices : public NSTimerService, public Console {
public:
    /// Opens the radio. Its callbacks go to `delegate`, on threads of the radio's own, and may begin at once.
    virtual std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) = 0;
    /// That could not be done: says so on the console, and to those who watch the radio.
    virtual void radioFailed(std::string_view why) noexcept { reportRadioFailed(*this, why); }
    /// The present moment.
    [[nodiscard]] virtual NSDate date() const = 0;
    /// Blocks the calling thread for that long on the platform's clock.
    /// @throws std::system_error (`resource_deadlock_would_occur`) where `canSleep` says no
    virtual void usleep(std::chrono::microseconds duration) = 0;
    /// Whether the calling thread may sleep: not where another thread makes the time pass and may be waiting for what
    /// this one holds.
    [[nodiscard]] virtual bool canSleep() const { return true; }
    [[nodiscard]] virtual const NSJSONSerialization& JSON() const = 0;
};

/// The platform that the manager of this process stands on: the one chosen, or else the default one, which is made now.
/// Only the making of the manager asks for it: from then on it is fixed, and it lives as long as the process. From any
/// thread. Where the default one cannot be made, another takes its place, whose radio does not open for that reason.
/// @throws std::bad_alloc
PlatformServices& currentPlatform();

/// Chooses it, for those who bring a platform of their own: tests, and `nearcast run`.
/// @throws std::logic_error once it is fixed
void setCurrentPlatform(std::unique_ptr<PlatformServices> platform);

}  // namespace nearcast
