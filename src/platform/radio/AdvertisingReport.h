// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBUUID.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast {

/// A Bluetooth device address as people write it: most significant octet first.
using DeviceAddress = std::array<std::uint8_t, 6>;

/// One advertisement as a radio heard it, before any filter.
struct AdvertisingReport {
    std::optional<DeviceAddress> address;  ///< who sent it, where the radio knows
    /// 0 public, 1 random, 2 and 3 the same resolved from a private one (Core Specification, Volume 4, Part
    /// E, 7.7.65.2)
    std::uint8_t addressType = 0;
    bool scanResponse = false;        ///< it answers a scan request, and was not sent unasked
    std::optional<std::string> name;  ///< the local name, any bytes
    /// Company identifier, low octet first as on the air, and what follows it.
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::vector<CBUUID> services;
    std::int32_t RSSI = 0;  ///< dBm; 127: the controller has no reading
};

}  // namespace nearcast
