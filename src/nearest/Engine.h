// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "nearest/Decision.h"
#include "support/AtomicShared.h"
#include "support/Mutex.h"

#include <nearcast/Nearest.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace nearcast {

/// What `Nearest` consists of: the decision under a mutex, what it stands on, and the changes that wait to be told.
/// Nothing foreign is called while the mutex is held.
class Nearest::Engine {
public:
    Engine(const Sources& sources, Changed changed, const NearestSettings& settings);

    void heard(const HeardAdvertisement& heard);
    void reported(std::string_view portName, std::string_view MACAddr, std::int32_t RSSI);
    /// Lets time pass, and asks how the radio is.
    void update();
    void refresh();

    [[nodiscard]] NearestChoice choice();
    [[nodiscard]] std::vector<NearestExplanation> explain();
    [[nodiscard]] const NearestSettings& settings() const noexcept { return settings_; }

    AtomicShared<QXNearcastManagerDelegate> next;

private:
    struct Delivery;

    bool takeReport(double at, std::string_view portName, std::string_view MACAddr, std::int32_t RSSI);
    void updateUntold();
    void refreshNow(double at);
    void refreshSometimes(double at);
    /// Asks how the radio is where the chosen device would fall silent now: it may be the radio that is.
    void askBeforeSilence(double at);
    void askRadio(double at);
    void noteChange(double at) NEARCAST_REQUIRES(mutex_);
    void tell();
    std::optional<NearestChange> takeUntold();

    const Sources sources_;
    const Changed changed_;
    const NearestSettings settings_;

    Mutex mutex_;
    nearest::Decision decision_ NEARCAST_GUARDED_BY(mutex_);
    std::uint64_t noted_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< `decision_.changes()` of what was noted last
    NearestChoice lastNoted_ NEARCAST_GUARDED_BY(mutex_);
    std::deque<NearestChange> untold_ NEARCAST_GUARDED_BY(mutex_);
    bool telling_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::optional<double> refreshed_ NEARCAST_GUARDED_BY(mutex_);
    std::uint64_t readsBegun_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::uint64_t readApplied_ NEARCAST_GUARDED_BY(mutex_) = 0;
    /// Whether there is something to tell; spares the mutex in the common case.
    std::atomic<bool> toTell_{false};
};

}  // namespace nearcast
