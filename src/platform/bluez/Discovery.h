// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nearcast::bluez {

/// How a discovery that is wanted fares.
enum class DiscoveryState {
    well,      ///< it runs, is about to, or is not wanted
    denied,    ///< the bus or bluetoothd forbids it
    failing,   ///< bluetoothd does not begin it
    quiet,     ///< it runs, and nothing at all is heard: the air is quiet, or the radio blind
    inactive,  ///< nothing is heard, and the adapter itself says that it does not discover: the radio is blind
};

/// Makes a discovery run on one adapter for as long as it is wanted, and makes it run again when it ended.
///
/// It compares what is wanted with what is, and makes the next call that brings them together, one at a time; so
/// whatever goes wrong, in whatever order, the next step follows from how things stand. It has no clock: `pass` brings
/// the time, `due` says when it next needs it. Not for several threads at once.
///
/// The watchdog restarts a discovery that heard nothing at all for 30 s, and then after twice the time again and again,
/// up to 8 minutes: BlueZ can stall while it says that it discovers.
class Discovery {
public:
    struct Listener {
        std::function<void()> stateChanged;
        std::function<void()> restarted;  ///< the discovery was begun again without a new wish
    };

    static constexpr Time quietLimit = std::chrono::seconds(30);
    static constexpr Time longestQuietLimit = std::chrono::minutes(8);
    /// A wish that ends and comes again within this time changes nothing: an application renews its scan that way.
    static constexpr Time linger = std::chrono::seconds(1);
    /// BlueZ says for a moment that it does not discover when it renews its scan.
    static constexpr Time doubt = std::chrono::seconds(1);
    static constexpr Time firstPause = std::chrono::milliseconds(250);
    static constexpr Time longestPause = std::chrono::seconds(2);

    /// @param bus lives longer
    Discovery(SystemBus& bus, Listener listener) : bus_(bus), listener_(std::move(listener)) {}

    /// Whether a discovery is wanted.
    void want(bool wanted);
    /// The adapter on which it can run, or nothing: everything that ran on the last one has ended with it.
    /// @param adapter  its path
    /// @param monitors whether it takes advertisement monitors
    void setAdapter(const std::optional<std::string>& adapter, bool monitors);
    /// The adapter's `Discovering`.
    void setDiscovering(bool discovering);
    /// bluetoothd has let go of the monitor, or is gone and with it the monitor.
    void loseMonitor();
    /// A report has been heard.
    void heard();

    /// What happens next happens at this time; never an earlier one. What is due waits for `pass`.
    void setTime(Time now) noexcept { now_ = now; }
    /// The time moves on; never back.
    void pass(Time now);
    /// When `pass` is needed, at the latest.
    [[nodiscard]] std::optional<Time> due() const;

    [[nodiscard]] DiscoveryState state() const noexcept { return state_; }
    /// The last failure; it says why in a condition that is `denied` or `failing`.
    [[nodiscard]] const Failure& failure() const noexcept { return failure_; }

private:
    using Answer = void (Discovery::*)(const std::optional<Failure>& failure);

    void step();
    void stepWanted();
    void stepUnwanted();
    Done then(Answer answer);
    void stopped(const std::optional<Failure>& failure);
    void monitored(const std::optional<Failure>& failure);
    void unmonitored(const std::optional<Failure>& failure);
    void filtered(const std::optional<Failure>& failure);
    void started(const std::optional<Failure>& failure);
    void fail(const Failure& failure);
    void pause();
    void forgetAdapter();
    void forgetWish();
    void lookForEnd();
    void lookForSilence();
    void lookForBlindness();
    void judge();

    SystemBus& bus_;
    const Listener listener_;
    Time now_{0};
    bool wanted_ = false;
    std::optional<Time> unwantedAt_;  ///< when the wish that has ended is given up
    std::string adapter_;             ///< empty: none
    bool monitors_ = false;

    // What is the case on the other side, as far as we know.
    bool discovering_ = false;  ///< the adapter says so
    bool running_ = false;      ///< we have begun a discovery
    bool filterSet_ = false;
    bool mustStop_ = false;         ///< bluetoothd may hold a discovery of ours that is not as it should be
    std::string monitoredAdapter_;  ///< where our monitor is registered; empty: nowhere
    bool monitorTried_ = false;

    std::optional<Time> beganAt_;  ///< begun, and the adapter has not said so yet
    bool denies_ = false;          ///< and has not for too long
    bool calling_ = false;         ///< an answer is to come
    std::uint64_t epoch_ = 0;      ///< answers of a former one are of no interest
    std::optional<Time> pauseEnds_;
    std::optional<Time> endedAt_;  ///< since when the adapter says that it does not discover
    std::optional<Time> watchAt_;  ///< when to look whether something was heard
    Time lastHeard_{0};            ///< or the begin of the discovery
    bool hasRun_ = false;          ///< since the wish came
    bool quiet_ = false;           ///< nothing was heard for as long as the limit says, and nothing since
    int failures_ = 0;             ///< one after another
    BackOff pause_{firstPause, longestPause};
    BackOff quietLimits_{quietLimit, longestQuietLimit};
    Time patience_ = quietLimit;  ///< the limit that counts now
    DiscoveryState state_ = DiscoveryState::well;
    Failure failure_;
};

}  // namespace nearcast::bluez
