// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace nearcast {

/// One advertisement as the radio heard it, before anything is smoothed. What it points to is valid during the call
/// that hands it over.
struct HeardAdvertisement {
    std::optional<std::string_view> name;  ///< the local name; any bytes
    /// Company identifier, low octet first as on the air, and what follows it (Core Specification Supplement, Part A,
    /// 1.4). Of several the last of company FFFF, a dongle's; without one, the last of the company that comes first.
    std::optional<std::span<const std::uint8_t>> manufacturerData;
    std::int32_t RSSI = 0;  ///< dBm; 127: the controller has no reading
    /// Whether it passes the filter of the scan that runs, so that the manager hears of it too.
    bool wanted = false;
    double at = 0;  ///< seconds of `Platform::now`
};

}  // namespace nearcast
