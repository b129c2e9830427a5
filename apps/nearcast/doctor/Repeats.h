// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <map>

namespace nearcast::cli {

/// Whether repeated reports of a sender come through. A controller that is asked to filter duplicates, and does so
/// strictly, hands over one report of each sender in a round of the scan, which takes ten seconds: two of them may lie
/// close together, where one round ends and the next begins, but never three. One thread at a time.
class Repeats {
public:
    using Time = std::chrono::microseconds;
    static constexpr Time close = std::chrono::seconds(5);
    static constexpr std::size_t mostSenders = 10000;  ///< of more nothing is known

    void heard(const DeviceAddress& sender, Time at);
    /// Three reports of one sender came within five seconds.
    [[nodiscard]] bool seen() const { return seen_; }
    [[nodiscard]] std::size_t senders() const { return lastTwo_.size(); }

private:
    bool seen_ = false;
    std::map<DeviceAddress, std::array<Time, 2>> lastTwo_;  ///< the later one first
};

}  // namespace nearcast::cli
