// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <cstdint>
#include <optional>
#include <string>

namespace nearcast {

/// The radio's condition. Other values may come from a radio of the future.
enum CBManagerState : std::int64_t {
    CBManagerStateUnknown = 0,
    CBManagerStateResetting = 1,
    CBManagerStateUnsupported = 2,
    CBManagerStateUnauthorized = 3,
    CBManagerStatePoweredOff = 4,
    CBManagerStatePoweredOn = 5,
};

/// The state's name: "unknown", "resetting", "unsupported", "unauthorized", "powered off", "powered on"; of another
/// value its number.
NEARCAST_EXPORT std::string nameOf(CBManagerState state);

/// How the radio itself is, whatever the dongles do: it tells "the dongle is silent" from "the radio is blind". A plain
/// value; see `Platform::radioHealth`.
struct RadioHealth {
    CBManagerState state = CBManagerStateUnknown;  ///< as it is now
    double since = 0;                              ///< when that state began, in seconds of `Platform::now`
    std::string why;                               ///< the reason in words, for people; empty where the state says all
    /// What the radio heard in the last ten seconds (or since it was opened, if that is less), a second: every
    /// advertisement of every sender, wanted or not.
    double reportsPerSecond = 0;
    std::optional<double> lastReportAge;  ///< in seconds; nothing: it has not heard anything yet
    std::uint64_t restarts = 0;           ///< how often it had to begin its scan again on its own
    /// How many messages other programs have sent in the name of the Bluetooth service; none of them was believed.
    std::uint64_t forged = 0;
};

}  // namespace nearcast
