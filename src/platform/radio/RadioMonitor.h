// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "platform/NSDate.h"
#include "platform/NSLog.h"
#include "platform/radio/AdvertisingReport.h"
#include "support/AtomicShared.h"
#include "support/Mutex.h"

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// What others may know of a radio beside what its delegate is told: how it is, and everything it hears. It belongs to
/// the platform and outlives the radio. From any thread.
class RadioMonitor {
public:
    using Clock = std::function<NSDate()>;
    using HealthChanged = std::function<void(const RadioHealth& health)>;
    /// @param at     when it was heard
    /// @param wanted whether it passes the filter of the scan that runs
    using Tap = std::function<void(const AdvertisingReport& report, NSDate at, bool wanted)>;

    /// @param console where exceptions of listeners go; lives longer
    /// @param clock   from any thread
    RadioMonitor(Console& console, Clock clock);

    /// @name For those who watch
    /// @{
    [[nodiscard]] RadioHealth health() const;
    /// Called when the state, its reason or the number of restarts has changed, on the radio's thread, with no lock
    /// held. An empty one ends it.
    void setHealthChanged(HealthChanged listener);
    /// Called for each report before any filter, on the radio's thread, with no lock held. An empty one ends it.
    void setTap(Tap tap);
    /// @}

    /// @name For the radio
    /// @{
    /// A radio is opened; nobody is called.
    void open(CBManagerState state, std::string why);
    void noteState(CBManagerState state, std::string why);
    /// No radio could be opened: said on the console, and told as a change of health once this thread holds nothing.
    void noteFailure(std::string_view why) noexcept;
    /// The scan was begun again without the application asking.
    void noteRestart();
    /// Somebody spoke in the name of the radio's service and was passed over. The first time of a radio is told as a
    /// change of health: who forges much must not have the application called as often.
    void noteForgery();
    void heard(const AdvertisingReport& report, bool wanted);
    /// @}

private:
    static constexpr std::size_t window = 10;  ///< seconds that the rate is taken over

    void tell();
    void moveTo(std::int64_t second) const NEARCAST_REQUIRES(mutex_);
    [[nodiscard]] double rate(NSDate now) const NEARCAST_REQUIRES(mutex_);

    Console& console_;
    const Clock clock_;
    AtomicShared<const HealthChanged> healthChanged_;
    AtomicShared<const Tap> tap_;
    mutable Mutex mutex_;
    RadioHealth health_ NEARCAST_GUARDED_BY(mutex_);
    NSDate opened_ NEARCAST_GUARDED_BY(mutex_);
    std::optional<NSDate> last_ NEARCAST_GUARDED_BY(mutex_);
    /// Reports of the last seconds, each second at its number modulo the window, and one for the running second.
    mutable std::array<std::uint32_t, window + 1> counts_ NEARCAST_GUARDED_BY(mutex_){};
    mutable std::int64_t second_ NEARCAST_GUARDED_BY(mutex_) = 0;
};

}  // namespace nearcast
