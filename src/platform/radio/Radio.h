// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBCentralManager.h"
#include "platform/NSLog.h"
#include "platform/radio/AdvertisingReport.h"
#include "platform/radio/RadioMonitor.h"
#include "support/Mutex.h"

#include <atomic>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast {

/// What all radios share: they remember the wish to scan and its filter, keep the state, and call the delegate in a way
/// that nothing it throws gets out. A back end derives from it, overrides `scanChanged`, and feeds `deliver` and
/// `changeState`.
class Radio : public CBCentralManager {
public:
    /// @param delegate, console, monitor live longer than the radio
    /// @param why the reason of the state, for people; empty where the state says all
    Radio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, CBManagerState state,
          std::string why = {});

    [[nodiscard]] CBManagerState state() const override { return state_.load(std::memory_order_acquire); }
    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                        ScanOptions options) override;
    void stopScan() override;

protected:
    struct Scan {
        std::optional<std::vector<CBUUID>> services;
        ScanOptions options;
    };

    /// The application wants another scan, or (nothing) none. Called on the application's thread after the wish has
    /// been noted; what it throws passes to the application.
    virtual void scanChanged(const std::optional<Scan>& scan);

    /// A report has been heard: hands it to the delegate when a scan runs and its filter lets it pass.
    void deliver(const AdvertisingReport& report);
    /// Notes the state and tells the delegate, also when it is the same again.
    void changeState(CBManagerState state, std::string why = {});
    /// The state is the same, its reason another one: the delegate is not told.
    void explainState(std::string why) { monitor_.noteState(state(), std::move(why)); }
    /// The scan was begun again without the application asking.
    void noteRestart() { monitor_.noteRestart(); }
    [[nodiscard]] bool scanning() const;
    [[nodiscard]] Console& console() const noexcept { return console_; }

private:
    [[nodiscard]] bool wanted(const AdvertisingReport& report) const;

    CBCentralManagerDelegate& delegate_;
    Console& console_;
    RadioMonitor& monitor_;
    std::atomic<CBManagerState> state_;
    mutable Mutex mutex_;
    std::optional<Scan> scan_ NEARCAST_GUARDED_BY(mutex_);
};

}  // namespace nearcast
