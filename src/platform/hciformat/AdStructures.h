// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/RawReport.h"
#include "platform/radio/AdvertisingReport.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace nearcast {

/// Reads the AD structures of an advertisement or a scan response (Core Specification, Volume 3, Part C, 11) into
/// `report`: local name, service UUIDs of all sizes, manufacturer data. Other structures, service data among them, are
/// ignored.
///
/// A complete name counts more than a shortened one, otherwise the first of several names counts. A name ends before
/// the zero octets that some makers put behind it; an empty one is none; octets that are not UTF-8 become U+FFFD (see
/// `wellFormed`). Which of several manufacturer data counts says `dongle::countsInstead`. A structure of length zero
/// ends the data early, whatever follows it.
///
/// @param data the octets as they were on the air
/// @return nothing when the data is well formed; else the offset of the first malformed structure: one that runs past
///         the end, a list that does not hold whole UUIDs, or manufacturer data without a company. What precedes it is
///         in `report`, the rest of the data is not
std::optional<std::size_t> readAdStructures(std::span<const std::uint8_t> data, AdvertisingReport& report);

/// The same for a report whose data has not been taken apart; the sender and the signal are taken over.
std::optional<std::size_t> readReport(const RawReport& raw, AdvertisingReport& report);

/// Writes a report's services, manufacturer data and name as AD structures (Core Specification, Volume 3, Part C, 11),
/// so that `readAdStructures` reads the same again.
///
/// What AD structures cannot say is left out: an empty name, manufacturer data without a whole company identifier, a
/// service whose text is no UUID. A name or manufacturer data longer than the 254 octets of a structure is cut there,
/// and a structure that does not fit into the 1650 octets of the longest advertisement is dropped.
std::vector<std::uint8_t> writeAdStructures(const AdvertisingReport& report);

}  // namespace nearcast
