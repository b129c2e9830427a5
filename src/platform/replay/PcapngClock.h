// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace nearcast::replay {

/// What an interface of a pcapng file counts time in: the options if_tsresol and if_tsoffset.
struct PcapngClock {
    /// The exponent of the unit: 10^-n seconds, or with the highest bit set 2^-n.
    std::uint8_t resolution = 6;
    std::int64_t offsetSeconds = 0;

    /// Ticks in nanoseconds since 1970. Times beyond what 64 bits hold become the nearest that they hold.
    [[nodiscard]] std::int64_t nanoseconds(std::uint64_t ticks) const;
};

}  // namespace nearcast::replay
