// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace nearcast::nearest {

/// From when on the user stands next to which dongle.
struct TruthMark {
    double at = 0;        ///< seconds on the recording's clock
    std::string MACAddr;  ///< empty: next to none

    friend bool operator==(const TruthMark&, const TruthMark&) = default;
};

/// Where the user stood: marks in order of time. Each holds until the next one; before the first one nothing is known.
using Truth = std::vector<TruthMark>;

/// The marks at which the dongle changes, the first one among them.
Truth changesOf(const Truth& truth);

}  // namespace nearcast::nearest
