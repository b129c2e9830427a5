// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace nearcast {

/// A moment, or a duration, of the clock that the sessions behind radios live by: nanoseconds since any start. They
/// have no clock of their own; whoever runs them passes the time in.
using Time = std::chrono::nanoseconds;

/// Makes `earliest` the earlier of the two, where there is one.
inline void takeEarlier(std::optional<Time>& earliest, const std::optional<Time>& other) {
    if (other && (!earliest || *other < *earliest)) earliest = other;
}

/// Pauses that double from one failure to the next, up to a longest one.
class BackOff {
public:
    constexpr BackOff(Time first, Time longest) : first_(first), longest_(longest), next_(first) {}

    /// The pause to make now; the next one is twice as long.
    Time next() {
        const Time pause = next_;
        next_ = std::min(next_ * 2, longest_);
        return pause;
    }
    /// What `next` would return now.
    [[nodiscard]] Time coming() const { return next_; }
    void reset() { next_ = first_; }

private:
    Time first_;
    Time longest_;
    Time next_;
};

/// Notices that a scan hears nothing. While the silence lasts it alarms less and less often, because the air may simply
/// be empty.
class QuietWatch {
public:
    static constexpr Time firstLimit = std::chrono::seconds(30);
    static constexpr Time longestLimit = std::chrono::minutes(8);

    /// A scan begins, or ends: then nothing is expected.
    void scan(bool runs, Time now) {
        if (runs == since_.has_value()) return;
        forgetQuiet();
        since_ = runs ? std::optional(now) : std::nullopt;
    }
    void heard(Time now) {
        if (since_) since_ = now;
        forgetQuiet();
    }
    /// @return whether it has been quiet for too long (again)
    bool rings(Time now) {
        if (!since_ || now - *since_ < limit_) return false;
        since_ = now;
        limit_ = limits_.next();
        quiet_ = true;
        return true;
    }
    /// When it rings next if nothing is heard.
    [[nodiscard]] std::optional<Time> due() const { return since_ ? std::optional(*since_ + limit_) : std::nullopt; }
    /// It has rung, and nothing has been heard since.
    [[nodiscard]] bool quiet() const { return quiet_; }

private:
    void forgetQuiet() {
        limits_.reset();
        limit_ = firstLimit;
        quiet_ = false;
    }

    std::optional<Time> since_;
    BackOff limits_{firstLimit * 2, longestLimit};  ///< those after the first
    Time limit_ = firstLimit;
    bool quiet_ = false;
};

}  // namespace nearcast
