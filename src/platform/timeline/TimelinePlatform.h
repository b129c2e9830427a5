// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform.h"
#include "platform/radio/RadioMonitor.h"
#include "platform/timeline/Timeline.h"

#include <memory>
#include <string>

namespace nearcast {

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
    void NSLog(std::string_view line) noexcept override;
    [[nodiscard]] NSDate date() const override;
    void usleep(std::chrono::microseconds duration) override;
    [[nodiscard]] const NSJSONSerialization& JSON() const override;

    /// What drives everything: see `Timeline::runUntil`, `Timeline::driveFromThread`.
    [[nodiscard]] Timeline& timeline() noexcept { return *timeline_; }
    /// What is known of the radio beside what its delegate is told.
    [[nodiscard]] RadioMonitor& monitor() noexcept { return monitor_; }
    /// Why what the radio plays ended before its end; empty when it did not. From any thread.
    [[nodiscard]] virtual std::string failure() const { return {}; }

private:
    Console& console_;
    const NSJSONSerialization& JSON_;
    RadioMonitor monitor_;
    std::shared_ptr<Timeline> timeline_;
};

}  // namespace nearcast
