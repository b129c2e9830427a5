// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/DeadScan.h"
#include "platform/bluez/MonitorKeeper.h"
#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nearcast::bluez {

/// How the discovery is doing.
enum class DiscoveryState {
    well,      ///< it runs, will run soon, or is not wanted
    denied,    ///< the bus or bluetoothd forbids it
    failing,   ///< bluetoothd does not start it
    quiet,     ///< it runs, and nothing is heard: the air is quiet, or the radio blind
    inactive,  ///< nothing is heard, and the adapter says that it does not discover: the radio is blind
    dead,      ///< bluetoothd takes a scan for running that the kernel has ended, and begins no other
    unproven,  ///< it was dead and has been begun again; nothing is heard yet
};

/// Keeps a discovery running on one adapter for as long as it is wanted, and restarts it when it ended.
///
/// It compares what is wanted with what is, and makes the call that brings them closer, one at a time. So whatever goes
/// wrong, in whatever order, the next step follows from the present state. It has no clock: `pass` brings the time,
/// `due` says when it next needs it. Not for several threads at once.
///
/// A watchdog restarts a discovery that heard nothing for 30 s, and then after pauses that double up to 8 minutes:
/// BlueZ can stall while it says that it discovers. A dead one (`DeadScan`) is tried more often.
class Discovery {
public:
    struct Listener {
        std::function<void()> stateChanged;
        std::function<void()> restarted;  ///< the discovery was started again without being wanted anew
    };

    static constexpr Time quietLimit = std::chrono::seconds(30);
    static constexpr Time longestQuietLimit = std::chrono::minutes(8);
    /// For so long a discovery that is no longer wanted goes on: an application often renews its scan that way.
    static constexpr Time linger = std::chrono::seconds(1);
    /// `Discovering` has to be false for longer than this: it is for a moment whenever BlueZ renews its scan.
    static constexpr Time doubt = std::chrono::seconds(1);
    static constexpr Time firstPause = std::chrono::milliseconds(250);
    static constexpr Time longestPause = std::chrono::seconds(2);
    static constexpr Time deadLimit = std::chrono::seconds(5);
    static constexpr Time longestDeadLimit = std::chrono::seconds(30);

    /// @param bus, kernel live longer
    Discovery(SystemBus& bus, KernelScan& kernel, Listener listener);

    /// Whether a discovery is wanted.
    void want(bool wanted);
    /// The adapter on which it can run, or nothing. What ran on the adapter before has ended.
    /// @param adapter  its path
    /// @param monitors whether it takes advertisement monitors
    void setAdapter(const std::optional<std::string>& adapter, bool monitors);
    /// The adapter's `Discovering`.
    void setDiscovering(bool discovering);
    /// bluetoothd has released the monitor.
    void loseMonitor() { monitor_.lose(now_); }
    /// bluetoothd has come or gone, or the adapter has, and with it the monitor and what was wrong.
    void forgetDaemon();
    /// A report has been heard.
    void heard();

    /// Sets the time of what happens next and does nothing that is due; the time never goes back.
    void setTime(Time now) noexcept {
        now_ = now;
        dead_.setTime(now);
    }
    /// Does everything that is due; the time never goes back.
    void pass(Time now);
    /// When `pass` is needed, at the latest.
    [[nodiscard]] std::optional<Time> due() const;

    [[nodiscard]] DiscoveryState state() const noexcept { return state_; }
    /// The last failure: the reason of the states `denied` and `failing`.
    [[nodiscard]] const Failure& failure() const noexcept { return failure_; }
    /// Whether a dead scan is left to others, for want of CAP_NET_ADMIN.
    [[nodiscard]] bool cannotMend() const { return dead_.cannotMend(); }

private:
    using Answer = void (Discovery::*)(const std::optional<Failure>& failure);

    [[nodiscard]] bool isWanted() const { return wanted_ || unwantedAt_; }
    void step();
    void stepWanted();
    void stepUnwanted();
    void start();
    void stop();
    Done then(Answer answer);
    void stopped(const std::optional<Failure>& failure);
    void filtered(const std::optional<Failure>& failure);
    void started(const std::optional<Failure>& failure);
    void fail(const Failure& failure);
    void failBusy(const Failure& failure);
    void pause();
    void forgetAdapter();
    void forgetWish();
    void lookForEnd();
    void lookForSilence();
    void lookForBlindness();
    void tryAnew();
    void watchDead();
    Time nextPatience();
    void deadChanged();
    void tellRestart() const {
        if (listener_.restarted) listener_.restarted();
    }
    void judge();

    SystemBus& bus_;
    const Listener listener_;
    Time now_{0};
    bool wanted_ = false;
    std::optional<Time> unwantedAt_;  ///< when the lingering ends
    std::string adapter_;             ///< empty: none

    // What is the case in bluetoothd, as far as we know.
    bool discovering_ = false;  ///< the adapter says so
    bool running_ = false;      ///< we have started a discovery
    bool filterSet_ = false;
    bool mustStop_ = false;  ///< bluetoothd may have a discovery of ours in a wrong state

    std::optional<Time> beganAt_;  ///< when it was started, while the adapter has not said so
    bool denies_ = false;          ///< the adapter has not said so for too long
    bool calling_ = false;         ///< an answer is pending
    std::uint64_t epoch_ = 0;      ///< raised with each adapter: answers of a former one are ignored
    std::optional<Time> pauseEnds_;
    std::optional<Time> endedAt_;  ///< since when the adapter says that it does not discover
    std::optional<Time> watchAt_;  ///< when the watchdog checks whether something was heard
    Time lastHeard_{0};            ///< or the start of the discovery
    bool hasRun_ = false;          ///< since it was wanted
    bool quiet_ = false;           ///< the watchdog has found silence, which lasts
    int failures_ = 0;             ///< since the last success
    BackOff pause_{firstPause, longestPause};
    BackOff quietLimits_{quietLimit, longestQuietLimit};
    BackOff deadLimits_{deadLimit, longestDeadLimit};
    Time patience_ = quietLimit;  ///< how long a silence the watchdog allows now
    MonitorKeeper monitor_;
    DeadScan dead_;
    DiscoveryState state_ = DiscoveryState::well;
    Failure failure_;
};

}  // namespace nearcast::bluez
