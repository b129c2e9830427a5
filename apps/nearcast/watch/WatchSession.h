// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Mutex.h"
#include "watch/WatchView.h"

#include <nearcast/QXNearcastManager.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// Stands between the manager and the view: it counts reports, computes their age and passes them on. From any thread;
/// its memory is bounded: see `mostStrangers`, beyond which dongles have no age.
class WatchSession {
public:
    /// Seconds from one tick to the next while something happens, and while nothing does: a machine on a battery is not
    /// woken to count seconds.
    static constexpr double busyTick = 0.25;
    static constexpr double quietTick = 2;

    /// @param wake ends the wait of `pause` early; called from any thread, with a lock of the session held
    WatchSession(std::unique_ptr<WatchView> view, std::function<void()> wake);

    /// Time counts from here. Call it before the radio is opened and before any other operation.
    void begin();
    /// From here on what the radio says of itself is kept until `release`, because it may turn out that there is
    /// nothing to watch with: then only that is said. Nothing is drawn either.
    void hold();
    void release();
    /// A change of the radio's health now ends the wait of `pause`: something depends on it.
    void awaitRadio(bool awaited);
    /// Whether the radio has told of a change since `begin`.
    [[nodiscard]] bool radioHasTold();
    /// The delegate to give to the manager.
    std::shared_ptr<QXNearcastManagerDelegate> delegate();
    void console(std::string_view line);
    /// The health of the radio has changed.
    void health(RadioHealth health);
    void tick();
    /// Draws everything anew.
    /// @param happened called first, with nothing shown meanwhile; gives whether others may have written to the
    /// terminal
    void drawAnew(const std::function<bool()>& happened);
    /// How many seconds to wait until the next tick. `wake` is called when something has to be shown earlier.
    [[nodiscard]] double pause();
    /// Releases what was kept, and shows the summary.
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
    void remember(std::string_view MACAddr, bool registered, double at) NEARCAST_REQUIRES(mutex_);
    void noteEvent() NEARCAST_REQUIRES(mutex_);
    void showKept() NEARCAST_REQUIRES(mutex_);
    void showOrKeep(std::function<void(WatchView&)> what) NEARCAST_REQUIRES(mutex_);

    const std::function<void()> wake_;
    double start_ = 0;
    Mutex mutex_;
    std::unique_ptr<WatchView> view_ NEARCAST_GUARDED_BY(mutex_);
    WatchSummary summary_ NEARCAST_GUARDED_BY(mutex_);
    std::map<std::string, double, std::less<>> heard_ NEARCAST_GUARDED_BY(mutex_);
    std::set<std::string, std::less<>> known_ NEARCAST_GUARDED_BY(mutex_);
    std::string broken_ NEARCAST_GUARDED_BY(mutex_);
    bool eventful_ NEARCAST_GUARDED_BY(mutex_) = false;  ///< something has happened since the last pause was asked for
    bool quiet_ NEARCAST_GUARDED_BY(mutex_) = false;     ///< the pause is a long one, to be ended by what happens
    bool holding_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::vector<std::function<void(WatchView&)>> kept_ NEARCAST_GUARDED_BY(mutex_);  ///< in their order, while holding
    bool radioAwaited_ NEARCAST_GUARDED_BY(mutex_) = false;
    bool radioHasTold_ NEARCAST_GUARDED_BY(mutex_) = false;
    bool ended_ NEARCAST_GUARDED_BY(mutex_) = false;
};

}  // namespace nearcast::cli
