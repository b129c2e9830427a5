// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/KernelScan.h"
#include "platform/bluez/Standstill.h"
#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <functional>
#include <optional>
#include <string>

namespace nearcast::bluez {

/// Notices that a discovery is dead, and mends it where the kernel may be asked.
///
/// A bluetoothd that was starved misses the kernel's news that a round has ended, waits for it for good, and begins no
/// other, whatever its clients do. With `KernelScan` that is seen a second after the end of the round, and mended.
/// Without it the answers to a stop tell: "busy", and the next time "nothing was started". Both may also come of
/// chance, in the moment between two rounds, so they count when they come twice and no report between. When to stop it
/// is told by a `Standstill` of the controller.
///
/// What was dead is not called well again before a report was heard. Not for several threads at once.
class DeadScan {
public:
    struct Listener {
        std::function<void()> changed;  ///< `dead` or `unproven`
        std::function<void()> revived;  ///< the discovery goes on, without having been asked for anew
        std::function<void()> still;    ///< the controller is silent: a stop would tell. Once in a silence
    };

    /// After a start the kernel's discovery runs within this time.
    static constexpr Time startLimit = std::chrono::seconds(2);
    /// Reports that come are a scan's, wherever from; without any for this long the kernel's news count.
    static constexpr Time hush = std::chrono::seconds(1);
    static constexpr Time firstPause = std::chrono::seconds(1);
    static constexpr Time longestPause = std::chrono::seconds(2);
    /// For so long after bluetoothd has come, the round of a former one may be in its way.
    static constexpr Time orphanLimit = std::chrono::seconds(15);

    /// @param kernel lives longer
    DeadScan(KernelScan& kernel, Listener listener) : kernel_(kernel), listener_(std::move(listener)) {}

    /// The adapter on which a discovery is wanted; empty: there is none.
    void watch(const std::string& adapter);
    /// bluetoothd has come or gone, or the adapter has: what was dead is no more.
    void forgetDaemon();
    /// A discovery is asked for.
    void asked();
    /// It has ended, or its end is asked for.
    void ended() { asked_ = false; }
    /// How a stop was answered.
    void stopAnswered(const std::optional<Failure>& failure);
    void heard();

    /// Where bluetoothd has just come and its kernel is busy, it is so with the round of a former one: ends that.
    /// @param discovers whether the adapter says that it discovers: then the round is somebody's
    /// @param done      whether there was one, and it has ended
    /// @return false where that cannot be tried; `done` is not called
    bool release(const Failure& failure, bool discovers, std::function<void(bool)> done);

    void setTime(Time now) noexcept {
        now_ = now;
        kernel_.setTime(now);
    }
    /// Does what is due.
    void pass(Time now);
    [[nodiscard]] std::optional<Time> due() const;

    [[nodiscard]] bool dead() const noexcept { return dead_; }
    /// It was dead, and nothing has been heard since.
    [[nodiscard]] bool unproven() const noexcept { return unproven_; }
    /// What a dead one answers was answered once.
    [[nodiscard]] bool suspected() const noexcept { return signs_ == 1; }
    /// It is left to others, for want of CAP_NET_ADMIN.
    [[nodiscard]] bool cannotMend() const { return kernel_.forbidden(); }

private:
    [[nodiscard]] std::optional<Time> lookAt() const;
    void lookForStandstill();
    void mend();
    void mended(KernelScan::Outcome outcome);
    void find();
    void clear();

    KernelScan& kernel_;
    const Listener listener_;
    Time now_{0};
    bool asked_ = false;
    Time askedAt_{0};
    std::optional<Time> heardAt_;  ///< since it was asked for
    bool refused_ = false;         ///< the last stop was answered by "busy"
    int signs_ = 0;                ///< how often what a dead scan answers was answered
    bool dead_ = false;
    bool unproven_ = false;
    bool mending_ = false;
    Time mendAt_{0};  ///< when the kernel may be asked again, at the earliest
    std::optional<Time> lookAt_;
    BackOff pause_{firstPause, longestPause};
    Standstill standstill_;
    bool stoodStill_ = false;  ///< in this silence
    Time orphansUntil_{0};
};

}  // namespace nearcast::bluez
