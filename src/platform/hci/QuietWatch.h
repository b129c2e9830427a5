// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>

namespace nearcast {

/// Notices that a scan has gone quiet. Whoever asked what is wrong and found nothing is told again later and later, for
/// the air may simply be empty. Time is passed in, from any start.
class QuietWatch {
public:
    using Time = std::chrono::nanoseconds;

    static constexpr Time firstLimit = std::chrono::seconds(30);
    static constexpr Time longestLimit = std::chrono::minutes(8);

    /// A scan begins, or ends: then nothing is expected.
    void scan(bool runs, Time now) {
        if (runs == since_.has_value()) return;
        limit_ = firstLimit;
        quiet_ = false;
        since_ = runs ? std::optional(now) : std::nullopt;
    }
    void heard(Time now) {
        if (since_) since_ = now;
        limit_ = firstLimit;
        quiet_ = false;
    }
    /// @return whether it has been quiet for too long (again)
    bool rings(Time now) {
        if (!since_ || now - *since_ < limit_) return false;
        since_ = now;
        limit_ = limit_ * 2 < longestLimit ? limit_ * 2 : longestLimit;
        quiet_ = true;
        return true;
    }
    /// When it rings next if nothing is heard.
    [[nodiscard]] std::optional<Time> due() const { return since_ ? std::optional(*since_ + limit_) : std::nullopt; }
    /// It has rung, and nothing has been heard since.
    [[nodiscard]] bool quiet() const { return quiet_; }

private:
    std::optional<Time> since_;
    Time limit_ = firstLimit;
    bool quiet_ = false;
};

}  // namespace nearcast
