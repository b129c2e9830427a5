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

/// The inside of `Nearest`: the decision under a mutex, its sources, and the changes that are not notified yet. No code
/// of the application is called while the mutex is held.
class Nearest::Engine {
public:
    Engine(const Sources& sources, Changed changed, const NearestSettings& settings);

    void heard(const HeardAdvertisement& heard);
    void reported(std::string_view portName, std::string_view MACAddr, std::int32_t RSSI);
    /// Asks for the radio's health, and lets time pass.
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
    /// Asks for the radio's health if the chosen device would fall silent now: it may be the radio that is silent.
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
    std::uint64_t noted_ NEARCAST_GUARDED_BY(mutex_) = 0;  ///< `decision_.changes()` at the last note
    NearestChoice lastNoted_ NEARCAST_GUARDED_BY(mutex_);
    std::deque<NearestChange> untold_ NEARCAST_GUARDED_BY(mutex_);
    bool telling_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::optional<double> refreshed_ NEARCAST_GUARDED_BY(mutex_);
    std::uint64_t readsBegun_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::uint64_t readApplied_ NEARCAST_GUARDED_BY(mutex_) = 0;
    /// Whether a change is not notified yet; avoids the mutex in the common case.
    std::atomic<bool> toTell_{false};
};

}  // namespace nearcast
