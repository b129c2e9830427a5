// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace nearcast {

/// The reading that says that there is none (Core Specification, Volume 4, Part E, 7.7.65.2).
inline constexpr std::int32_t noRSSI = 127;

/// One advertising report as a controller or a sniffer gives it, the advertisement's data not yet taken apart.
struct RawReport {
    std::optional<DeviceAddress> address;  ///< nothing: the sender is anonymous
    std::uint8_t addressType = 0;          ///< 0 public, 1 random, 2 and 3 the same resolved from a private one
    bool scanResponse = false;
    std::int32_t RSSI = noRSSI;          ///< dBm
    std::span<const std::uint8_t> data;  ///< AD structures; valid during the call of the sink only
};

/// Takes reports one by one.
using RawReportSink = std::function<void(const RawReport&)>;

}  // namespace nearcast
