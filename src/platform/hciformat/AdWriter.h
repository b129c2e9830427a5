// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <cstdint>
#include <vector>

namespace nearcast {

/// Writes a report's services, manufacturer data and name as AD structures (Core Specification, Volume 3, Part C, 11),
/// so that `readAdStructures` reads the same again.
///
/// What AD structures cannot say is left out: an empty name, manufacturer data without a whole company identifier, a
/// service whose text is no UUID. A name or manufacturer data longer than the 254 octets of a structure is cut there,
/// and a structure that does not fit into the 1650 octets of the longest advertisement is dropped.
std::vector<std::uint8_t> writeAdStructures(const AdvertisingReport& report);

}  // namespace nearcast
