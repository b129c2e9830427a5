// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace nearcast::lab {

/// From when on the user stands next to which dongle.
struct TruthMark {
    double at = 0;        ///< seconds on the recording's clock
    std::string MACAddr;  ///< empty: next to none
    std::size_t line{};   ///< of its file, from 1; for messages

    friend bool operator==(const TruthMark& left, const TruthMark& right) {
        return left.at == right.at && left.MACAddr == right.MACAddr;
    }
};

/// Where the user stood: marks in order of time. Each holds until the next one; before the first one nothing is known.
using Truth = std::vector<TruthMark>;

/// The marks at which the dongle changes, the first one among them.
Truth changesOf(const Truth& truth);

}  // namespace nearcast::lab
