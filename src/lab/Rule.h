// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

namespace nearcast::lab {

/// A way to decide which dongle is nearest, to be compared with others: it is told what was heard, in order of time,
/// and asked from time to time. One thread. Times are in seconds, addresses as the manager writes them.
class Rule {
public:
    virtual ~Rule() = default;
    Rule() = default;
    Rule(const Rule&) = delete;
    Rule& operator=(const Rule&) = delete;

    /// A raw reading in dBm; never 127.
    virtual void heard(double at, std::string_view MACAddr, std::int32_t RSSI) = 0;
    /// The manager's smoothed report in dBm. It comes after the raw reading that brought it about.
    virtual void reported(double /*at*/, std::string_view /*MACAddr*/, std::int32_t /*RSSI*/) {}
    /// The manager told that the dongle has fallen silent.
    virtual void silent(double /*at*/, std::string_view /*MACAddr*/) {}
    /// The radio can hear again, or cannot.
    virtual void radio(double /*at*/, bool /*hears*/) {}
    /// The address of the dongle that is nearest at this moment; "" for none. Valid until the next call.
    virtual std::string_view nearest(double at) = 0;
};

}  // namespace nearcast::lab
