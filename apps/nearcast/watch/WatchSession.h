// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"
#include "watch/WatchView.h"

#include <nearcast/QXNearcastManager.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

namespace nearcast::cli {

/// What happens between the manager and the view: it counts, ages and passes on. From any thread.
class WatchSession {
public:
    explicit WatchSession(std::unique_ptr<WatchView> view);

    /// Time counts from here. Called before the radio is opened, and so before all others.
    void begin();
    /// Whom the manager tells.
    std::shared_ptr<QXNearcastManagerDelegate> delegate();
    void console(std::string_view line);
    /// How the radio is, when that has changed.
    void health(RadioHealth health);
    void tick();
    /// Shows the summary.
    /// @throws std::runtime_error when the view could not be written
    void end();

    /// Since `begin`, on the platform's clock.
    [[nodiscard]] double seconds() const;
    /// Whether the view could not be written any more; `end` then says why.
    [[nodiscard]] bool broken();

private:
    template <class Show>
    void show(const Show& what) NEARCAST_REQUIRES(mutex_);
    void report(std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr, std::int32_t RSSI);
    void silent(std::string_view portName, std::string_view MACAddr);

    double start_ = 0;
    Mutex mutex_;
    std::unique_ptr<WatchView> view_ NEARCAST_GUARDED_BY(mutex_);
    WatchSummary summary_ NEARCAST_GUARDED_BY(mutex_);
    std::map<std::string, double, std::less<>> heard_ NEARCAST_GUARDED_BY(mutex_);
    std::unordered_set<std::string> known_ NEARCAST_GUARDED_BY(mutex_);
    std::string broken_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast::cli
