// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Drive.h"
#include "platform/Platform.h"
#include "platform/radio/RadioMonitor.h"
#include "platform/radio/RadioString.h"
#include "platform/timeline/Timeline.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace nearcast {

/// The `speed` of a radio that has a time of its own: how many times faster than real time it goes, 1 where the option
/// is absent; nothing for `speed=max`, as fast as it goes.
/// @throws std::invalid_argument when it is neither "max" nor a finite number above 0
std::optional<double> parseSpeed(const RadioString& radio);

/// A platform whose time is that of a timeline: what recordings and the simulated shop have in common. Only the radio
/// is left to the back end.
///
/// Its operations may be called from any thread, but only one thread drives the timeline.
class TimelinePlatform : public PlatformServices {
public:
    /// @param console where console lines go; lives longer than the platform
    /// @param JSON    lives longer than the platform
    /// @param pace    none: time passes as fast as it goes
    TimelinePlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace);

    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override;
    std::shared_ptr<NSTimer> scheduledIdlingTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler,
                                                  const Idle& idle) override;
    void NSLog(std::string_view line) noexcept override;
    void radioFailed(std::string_view why) noexcept override { monitor_.noteFailure(why); }
    [[nodiscard]] NSDate date() const override;
    void usleep(std::chrono::microseconds duration) override;
    [[nodiscard]] bool canSleep() const override;
    [[nodiscard]] const NSJSONSerialization& JSON() const override;

    /// What drives everything: see `Timeline::runUntil`, `Timeline::driveFromThread`.
    [[nodiscard]] Timeline& timeline() noexcept { return *timeline_; }
    /// The radio's health and reports, beside what its delegate is told.
    [[nodiscard]] RadioMonitor& monitor() noexcept { return monitor_; }
    /// Why what the radio plays ended before its end; empty when it did not. From any thread.
    [[nodiscard]] virtual std::string failure() const { return timeline_->failure(); }

private:
    Console& console_;
    const NSJSONSerialization& JSON_;
    RadioMonitor monitor_;
    std::shared_ptr<Timeline> timeline_;
};

/// Drives a platform that has a time of its own.
class TimelineDrive : public Drive {
public:
    /// @param platform lives longer
    explicit TimelineDrive(TimelinePlatform& platform) : platform_(platform) {}

    int descriptor() override { return -1; }
    void dispatch() override {}
    bool runFor(std::chrono::microseconds duration) override;
    std::chrono::microseconds quiet() override { return platform_.timeline().quiet(); }
    void interrupt() override { platform_.timeline().interrupt(); }
    [[nodiscard]] std::string failure() const override { return platform_.failure(); }

private:
    TimelinePlatform& platform_;
    std::atomic<bool> exhausted_{false};
};

}  // namespace nearcast
