// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/RawReport.h"
#include "platform/radio/AdvertisingReport.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace nearcast {

/// Reads the AD structures of an advertisement or a scan response (Core Specification, Volume 3, Part C, 11) into
/// `report`: local name, service UUIDs of all sizes, manufacturer data. Other structures, service data among them, are
/// passed over.
///
/// A complete name counts more than a shortened one, otherwise the first of several names and of several manufacturer
/// data counts; an empty name is none. A structure of length zero ends the data early, whatever follows it.
///
/// @param data the octets as they were on the air
/// @return nothing when the data is well formed; else where the first malformed structure begins: one that runs past
/// the
///         end, a list that does not hold whole UUIDs, manufacturer data without a company. What precedes it is in
///         `report`, the rest of the data is not
std::optional<std::size_t> readAdStructures(std::span<const std::uint8_t> data, AdvertisingReport& report);

/// The same for a report whose data has not been taken apart; the sender and the signal are taken over.
std::optional<std::size_t> readReport(const RawReport& raw, AdvertisingReport& report);

}  // namespace nearcast
