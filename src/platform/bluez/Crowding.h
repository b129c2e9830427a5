// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/BackOff.h"

#include <chrono>
#include <utility>

namespace nearcast::bluez {

/// Decides when to let messages gather. Waking up costs the machine about as much as a report, so messages that follow
/// each other closely are taken together. The signals are averaged over seconds, so the delay does not show; a single
/// message does not wait. Of one thread.
class Crowding {
public:
    /// What comes again sooner than this is crowded, and a pause takes this long.
    static constexpr std::chrono::milliseconds interval{5};
    /// For how long there is no pause after a flood: messages would fill the socket meanwhile and make the bus wait.
    static constexpr Time floodMemory = std::chrono::seconds(1);

    /// A turn begins.
    void turn(Time now) { close_ = now - std::exchange(lastTurn_, now) < interval; }
    /// Whether there are often more messages than one.
    [[nodiscard]] bool crowded() const noexcept { return crowded_ || close_; }
    /// @param messages what the turn has taken
    /// @param more     whether there are more than a turn takes
    void taken(int messages, bool more) {
        if (more) floodedUntil_ = lastTurn_ + floodMemory;
        crowded_ = close_ || messages > 1;
    }
    /// Whether to pause before the next turn.
    [[nodiscard]] bool pausing() const noexcept { return crowded_ && lastTurn_ >= floodedUntil_; }

private:
    Time lastTurn_{0};
    Time floodedUntil_{0};
    bool close_ = false;    ///< the last two turns were
    bool crowded_ = false;  ///< after the last turn
};

}  // namespace nearcast::bluez
