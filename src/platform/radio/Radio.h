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
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast {

/// How a radio is, and why, for people: the reason is empty where the state says all.
struct RadioCondition {
    CBManagerState state = CBManagerStateUnknown;
    std::string why;
    friend bool operator==(const RadioCondition&, const RadioCondition&) = default;
};

/// What the session behind a radio tells it, on the thread that runs the session. It may not be run again from inside.
class SessionListener {
public:
    virtual ~SessionListener() = default;
    /// A report has been heard, whether a filter lets it pass or not; valid during the call.
    virtual void deliver(const AdvertisingReport& report) = 0;
    /// The state or its reason has changed.
    virtual void conditionChanged(const RadioCondition& condition) = 0;
    /// The scan was started again although the application did not ask for it.
    virtual void scanRestarted() = 0;
    /// Another program has said something in the name of the service behind the radio; it was passed over.
    virtual void forged() {}
};

/// What all radios share: they remember the scan that is wanted and its filter, keep the state, and catch what the
/// delegate throws. A back end derives from it, overrides `scanChanged`, and calls `deliver` and `changeState`; one
/// with a session behind it lets the session call, as its listener.
class Radio : public CBCentralManager, protected SessionListener {
public:
    /// @param delegate, console, monitor live longer than the radio
    /// @param why the reason of the state, for people; empty where the state says all
    Radio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, CBManagerState state,
          std::string why = {});

    [[nodiscard]] CBManagerState state() const override { return state_.load(std::memory_order_acquire); }
    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                        ScanOptions options) override;
    void stopScan(StopOptions options = {}) override;

protected:
    struct Scan {
        std::optional<std::vector<CBUUID>> services;
        bool allowDuplicates = false;
    };

    /// The application wants another scan, or (nothing) none. Called on the application's thread after that has been
    /// noted; what it throws passes to the application.
    virtual void scanChanged(const std::optional<Scan>& scan);

    /// Hands a report to the delegate when a scan runs and its filter lets the report pass.
    void deliver(const AdvertisingReport& report) final;
    /// Notes the state and tells the delegate, also when it is the same again.
    void changeState(CBManagerState state, std::string why = {});
    /// The radio's thread cannot go on: that is said on the console, and the state is unknown for good.
    void end(std::string_view why) noexcept;
    /// Where the reason alone has changed, the delegate is not told.
    void conditionChanged(const RadioCondition& condition) final;
    void scanRestarted() final { monitor_.noteRestart(); }
    void forged() final { monitor_.noteForgery(); }
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
