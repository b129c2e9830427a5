// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/system/WakeUp.h"
#include "platform/timeline/Timeline.h"
#include "support/Mutex.h"

#include <optional>

namespace nearcast {

/// Lets a timeline's time pass with the machine's clock, so many times as fast. The timeline's 0 is the moment of the
/// first wait, for good: a timeline that was held up goes through what it missed as fast as it can until it is on time
/// again.
class RealPace : public Pace {
public:
    /// @param speed the timeline's seconds per second
    /// @throws std::invalid_argument when the speed is not a finite number above 0
    /// @throws std::system_error when the system gives no descriptors
    explicit RealPace(double speed);

    /// @throws std::system_error when somebody closed its descriptors
    bool waitUntil(std::chrono::microseconds time) override;
    void wake() override { wakeUp_.wake(); }
    [[nodiscard]] std::optional<std::chrono::microseconds> reached() const override;

private:
    /// When the timeline stood at 0.
    SystemClock::Time start();
    bool awaitEither();

    const double speed_;
    WakeUp wakeUp_;
    mutable Mutex mutex_;
    std::optional<SystemClock::Time> start_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast
