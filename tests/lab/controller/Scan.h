// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace nearcast::lab {

/// What the host has the controller's scanner do.
struct Scan {
    bool enabled = false;
    bool active = false;
    bool filterDuplicates = false;
    bool extended = false;      ///< reports go out as LE Extended Advertising Report
    std::uint64_t enables = 0;  ///< how often it was switched on; a duplicate filter begins anew each time
};

}  // namespace nearcast::lab
