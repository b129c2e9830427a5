// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Dongle.h"
#include "lab/controller/Scan.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace nearcast::lab {

using Time = std::chrono::microseconds;  ///< from any start

/// What one dongle has put on the air: the truth that receivers are measured against.
struct Tally {
    std::uint64_t aired = 0;     ///< advertisements, whether anybody listened or not
    std::uint64_t reported = 0;  ///< those that went to the host; scan responses are not counted
};

/// The dongles around a controller: who advertises when, and what the controller's scanner reports of it. Time is told
/// to it.
class Air {
public:
    using Sink = std::function<void(const Bytes& event)>;

    /// @param strict where the host asks for a duplicate filter, one report for each sender until the scan is switched
    ///               on anew; other controllers report everything all the same
    explicit Air(bool strict = false) : strict_(strict) {}

    /// Brings a dongle, or changes the one of that name; it advertises from now on.
    void put(const std::string& name, Dongle dongle, Time now);
    /// @return false when there is none of that name
    bool remove(const std::string& name) { return emitters_.erase(name) != 0; }
    /// @param name `*`: all of them
    bool silence(const std::string& name, bool silent);
    /// The scanner hears nothing, though it says that it scans.
    void setDeaf(bool deaf) { deaf_ = deaf; }
    void setStrict(bool strict) { strict_ = strict; }

    /// When something is to be done next.
    [[nodiscard]] std::optional<Time> next() const;
    /// Everything that is due. Each advertisement keeps to a rhythm with 10 ms of random delay, as on the air, so that
    /// two dongles of one rate drift apart.
    void advance(Time now, const Scan& scan, const Sink& sink);
    [[nodiscard]] std::map<std::string, Tally> tallies() const;

private:
    struct Emitter {
        Dongle dongle;
        Tally tally;
        Time slot{};  ///< the rhythm's own moment
        Time due{};   ///< with the delay
    };

    void advertise(Emitter& emitter, const Scan& scan, const Sink& sink);
    void report(const Dongle& dongle, int rssi, bool response, const Scan& scan, const Sink& sink);
    [[nodiscard]] bool passesFilter(const Dongle& dongle, bool response, const Scan& scan);
    void plan(Emitter& emitter);

    bool strict_;
    bool deaf_ = false;
    std::map<std::string, Emitter> emitters_;
    /// By the duplicate filter: address, whether it is a random one, whether it was a response.
    std::set<std::tuple<Address, bool, bool>> seen_;
    std::uint64_t seenInEnable_ = 0;
    std::minstd_rand random_{1};
};

}  // namespace nearcast::lab
