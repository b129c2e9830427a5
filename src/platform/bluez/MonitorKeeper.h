// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nearcast::bluez {

/// Keeps our advertisement monitor registered while a scan is wanted.
///
/// Its calls go beside those of the scan, so that a bluetoothd that is slow with them keeps no scan from beginning: the
/// start waits a moment for a registration, because the scan that begins after it hears more, and no longer. One that
/// bluetoothd refuses is not asked for again on this adapter; one that it releases is, after pauses that double.
/// It has no clock: each call brings the time. Not for several threads at once.
class MonitorKeeper {
public:
    /// For so long the start of a scan waits.
    static constexpr Time grace = std::chrono::milliseconds(250);
    static constexpr Time firstPause = std::chrono::milliseconds(250);
    static constexpr Time longestPause = std::chrono::minutes(1);

    /// @param bus      lives longer
    /// @param answered called when a call has been answered
    MonitorKeeper(SystemBus& bus, std::function<void()> answered) : bus_(bus), answered_(std::move(answered)) {}

    /// The adapter on which a scan can run (empty: none), and whether it takes monitors.
    void setAdapter(const std::string& adapter, bool offered);
    /// bluetoothd has released the monitor.
    void lose(Time now);
    /// bluetoothd has come or gone, or the adapter has, and with it the monitor.
    void forgetDaemon();

    /// A scan is wanted: registers one where that is due.
    void keep(Time now);
    /// None is wanted, and none runs: takes it back.
    void end();
    /// Whether the start of a scan had better wait.
    [[nodiscard]] bool holdsStart(Time now) const { return calling_ && now < graceEnds_; }
    /// When `keep` is needed, or the start need not wait any longer.
    [[nodiscard]] std::optional<Time> due(Time now) const;

private:
    [[nodiscard]] bool isMissing() const;
    void call(void (SystemBus::*method)(const std::string&, Done), void (MonitorKeeper::*answer)(const Failure*));
    void registered(const Failure* failure);
    void unregistered(const Failure* failure);

    SystemBus& bus_;
    const std::function<void()> answered_;
    std::string adapter_;
    bool offered_ = false;
    std::string place_;  ///< the adapter where ours is registered; empty: nowhere
    bool refused_ = false;
    bool calling_ = false;     ///< an answer is pending
    std::uint64_t epoch_ = 0;  ///< raised with each adapter: answers of a former one are ignored
    Time at_{0};               ///< when another may be registered, at the earliest
    Time graceEnds_{0};
    BackOff pause_{firstPause, longestPause};
};

}  // namespace nearcast::bluez
