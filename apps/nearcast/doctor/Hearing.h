// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doctor/Repeats.h"
#include "platform/radio/AdvertisingReport.h"
#include "support/Mutex.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// What was heard of one dongle.
struct DongleHearing {
    std::string address;  ///< as the manager would tell it; "from ..." where the dongle never said it
    std::uint64_t reports = 0;
    // How many of them had:
    std::uint64_t services = 0;  ///< the dongle service, without which the manager's scan passes them over
    std::uint64_t payloads = 0;  ///< the address in the manufacturer data
    std::uint64_t names = 0;     ///< the address in the name, and manufacturer data that let the name count
    std::uint64_t signals = 0;   ///< a signal that is one
    double meanRSSI = 0;         ///< dBm, of these
    double longestGap = 0;       ///< seconds from one report to the next, or to the end
};

/// What was heard in all.
struct Hearing {
    double seconds = 0;
    std::uint64_t reports = 0;
    std::uint64_t foreign = 0;           ///< of these: of no dongle
    std::uint64_t senders = 0;           ///< that have an address
    bool repeats = false;                ///< repeated reports of a sender came through
    std::vector<DongleHearing> dongles;  ///< those with the most reports first
};

/// Counts what a radio hears. From any thread; its memory is bounded.
class HearingCounter {
public:
    using Time = std::chrono::microseconds;
    static constexpr std::size_t mostDongles = 1000;   ///< more are counted as foreign
    static constexpr std::size_t mostSenders = 10000;  ///< of more it is not known which dongle they are

    void heard(const AdvertisingReport& report, Time at);
    [[nodiscard]] Hearing result(Time end) const;

private:
    struct Dongle {
        DongleHearing hearing;
        Time last{0};
        double sumRSSI = 0;
    };

    [[nodiscard]] std::optional<std::string> dongleOf(const AdvertisingReport& report, std::optional<std::string> said,
                                                      bool service) NEARCAST_REQUIRES(mutex_);

    mutable Mutex mutex_;
    std::uint64_t reports_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::uint64_t foreign_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::map<std::string, Dongle> dongles_ NEARCAST_GUARDED_BY(mutex_);
    /// Which dongle a sender is: not every report says.
    std::map<DeviceAddress, std::string> senders_ NEARCAST_GUARDED_BY(mutex_);
    Repeats repeats_ NEARCAST_GUARDED_BY(mutex_);
};

/// An address as the manager reads it.
struct SaidAddress {
    std::string text;        ///< made from a name it can be any text
    bool inPayload = false;  ///< it stands in the manufacturer data, not in the name
};

/// The address that a report says. Of a report without the dongle service, which the manager never gets, only one that
/// has the form of a dongle's counts.
std::optional<SaidAddress> addressSaidIn(const AdvertisingReport& report);

}  // namespace nearcast::cli
