// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Drive.h"
#include "platform/Platform.h"
#include "platform/radio/RadioMonitor.h"
#include "platform/system/TimerService.h"
#include "platform/system/WakeUp.h"

#include <functional>
#include <memory>

namespace nearcast {

/// The platform of the machine: its clock, timers on it, and a radio that the caller opens.
class SystemPlatform : public PlatformServices {
public:
    using OpenRadio =
        std::function<std::unique_ptr<CBCentralManager>(CBCentralManagerDelegate& delegate, RadioMonitor& monitor)>;

    /// @param console   where console lines go; lives longer
    /// @param JSON      lives longer
    /// @param openRadio opens the radio when the manager is made
    /// @param loop, executor as `TimerService` has them
    /// @throws std::system_error when the system gives no descriptors or no thread
    SystemPlatform(Console& console, const NSJSONSerialization& JSON, OpenRadio openRadio, TimerService::Loop loop,
                   TimerService::Executor executor);

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;
    void radioFailed(std::string_view why) noexcept override { monitor_.noteFailure(why); }
    [[nodiscard]] NSDate date() const override;
    void usleep(std::chrono::microseconds duration) override;
    [[nodiscard]] const NSJSONSerialization& JSON() const override { return JSON_; }
    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override;
    void NSLog(std::string_view line) noexcept override { console_.NSLog(line); }

    [[nodiscard]] TimerService& timers() noexcept { return timers_; }
    /// The radio's health and reports, beside what its delegate is told.
    [[nodiscard]] RadioMonitor& monitor() noexcept { return monitor_; }

private:
    Console& console_;
    const NSJSONSerialization& JSON_;
    const OpenRadio openRadio_;
    TimerService timers_;
    RadioMonitor monitor_;
};

/// Drives the machine's platform on the application's own loop. Where its timers have a thread of their own there is
/// nothing to drive: a run then only lets its time pass.
class SystemDrive : public Drive {
public:
    /// @param platform lives longer
    explicit SystemDrive(SystemPlatform& platform) : platform_(platform) {}

    int descriptor() override { return platform_.timers().descriptor(); }
    void dispatch() override { platform_.timers().dispatch(); }
    bool runFor(std::chrono::microseconds duration) override;
    void interrupt() override { interruption_.wake(); }
    [[nodiscard]] std::string failure() const override { return {}; }

private:
    SystemPlatform& platform_;
    WakeUp interruption_;  ///< also rings at the end of a run
};

}  // namespace nearcast
