// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace nearcast::lines {

/// Since when the user stands next to a dongle, or next to none.
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

/// Reads where the user of a recording stood: JSON Lines of {"at": seconds, "truth": address}, where null means next to
/// none. "distance", "second" and "secondDistance", which tell more, are checked and ignored. Times do not fall; of two
/// lines with one time the later one counts.
/// @param path a file; "-" is standard input
/// @throws InputError for a file or a line that cannot be read, and for a file without a line
Truth readTruth(const std::string& path);

}  // namespace nearcast::lines
