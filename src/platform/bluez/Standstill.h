// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/BackOff.h"

#include <cstdint>
#include <optional>

namespace nearcast::bluez {

/// Notices that a controller says nothing at all while a discovery is said to run. In the quietest air it answers the
/// kernel's commands at the end of each round, so that its events tell quiet air from a scan that has ended. Anybody
/// may count them. Of one thread.
class Standstill {
public:
    /// After so long a silence the events are counted.
    static constexpr Time hush = std::chrono::seconds(2);
    /// Longer than a round.
    static constexpr Time limit = std::chrono::seconds(12);
    /// A look that comes later than this follows a sleep of the machine, in which no round ends.
    static constexpr Time slack = std::chrono::seconds(2);

    void begin(Time now) {
        count_.reset();
        at_ = now + hush;
    }
    void end() { at_.reset(); }
    [[nodiscard]] std::optional<Time> due() const { return at_; }

    /// @param silence how long nothing has been heard
    /// @param count   gives the number of events so far, or nothing
    /// @return whether there was none for the whole of `limit`
    template <class Count>
    bool rings(Time now, Time silence, Count count) {
        if (!at_ || now < *at_) return false;
        const bool whole = silence >= limit && now - *at_ <= slack;
        const std::optional<std::uint32_t> before = whole ? count_ : std::nullopt;
        count_.reset();
        if (silence >= hush) count_ = count();
        at_ = now + (silence >= hush ? limit : hush);
        return before && count_ == before;
    }

private:
    std::optional<Time> at_;
    std::optional<std::uint32_t> count_;  ///< at the last look
};

}  // namespace nearcast::bluez
