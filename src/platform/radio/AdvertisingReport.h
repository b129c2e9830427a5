// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBUUID.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast {

/// One advertisement as a radio heard it, before any filter.
struct AdvertisingReport {
    std::optional<std::string> name;  ///< the local name, any bytes
    /// Company identifier, low octet first as on the air, and what follows it.
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::vector<CBUUID> services;
    std::int32_t RSSI = 0;  ///< dBm; 127: the controller has no reading
};

}  // namespace nearcast
