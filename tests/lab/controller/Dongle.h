// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Bytes.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::lab {

using Address = std::array<std::uint8_t, 6>;  ///< as people write it, most significant octet first

/// How a dongle advertises (Core Specification, Volume 4, Part E, 7.7.65.2).
enum class Advertising {
    connectable,     ///< ADV_IND
    scannable,       ///< ADV_SCAN_IND
    nonConnectable,  ///< ADV_NONCONN_IND
};

/// Something on the air.
struct Dongle {
    Address address{};
    std::optional<Bytes> payload;          ///< what follows the company identifier 0xFFFF
    std::optional<std::string> localName;  ///< in the scan response
    bool service = true;                   ///< whether it advertises the dongles' service
    Advertising advertising = Advertising::nonConnectable;
    bool answersScans = false;
    double rate = 10;            ///< advertisements a second
    std::vector<int> rssi{-60};  ///< dBm, one after another, again from the start
    bool silent = false;
    /// AD structures, octet by octet, in place of flags, service and payload, and of the name.
    std::optional<Bytes> data;
    std::optional<Bytes> response;
    bool random = false;    ///< its address
    bool extended = false;  ///< it advertises in the extended way, which scanners of old do not hear
};

/// What it advertises: flags, service, manufacturer data; or its octets.
Bytes advertisingData(const Dongle& dongle);
/// What it answers to a scan request: its name; or its octets.
Bytes scanResponseData(const Dongle& dongle);
/// Whether a scanner may ask it for more.
bool takesScanRequests(const Dongle& dongle);

}  // namespace nearcast::lab
