// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/Queue.h"

#include <cstdint>
#include <optional>

namespace nearcast {

/// The smoothing of one dongle's signal. A plain value; not for several threads at once.
///
/// A reading goes into a sliding window, and the strongest reading of a full window is the candidate. Fading makes
/// readings weaker far more often than stronger, so the maximum follows the true level. A candidate within 2 dB of the
/// last output is followed at once. A larger change is followed only when the candidates of the whole history had left
/// the outputs behind, so that one outlier does not move the output.
class Smoothing {
public:
    /// Why a reading gave an output, or none.
    enum class Stage {
        filling,   ///< the window of readings is not full: no output
        settling,  ///< the history of outputs is not full: the candidate is the output
        holding,   ///< both are full: the rule above decides
    };

    struct Result {
        Stage stage = Stage::filling;
        std::optional<std::int32_t> output;  ///< dBm
        std::size_t readings = 0;            ///< in the window, this one included
        std::size_t outputs = 0;             ///< in the history, this one not included
    };

    /// @param capacity of the three windows, for their whole life
    /// @param first    the reading that made the dongle known, in dBm
    Smoothing(std::uint64_t capacity, std::int32_t first);

    /// Takes a reading in.
    /// @param RSSI           in dBm
    /// @param samplingNumber what counts as a full window now; it may differ from the capacity
    Result add(std::int32_t RSSI, std::uint64_t samplingNumber);

    /// The newest output, or null while there is none.
    [[nodiscard]] const std::int32_t* lastOutput() const noexcept { return outputRSSI_.lastObject(); }

private:
    [[nodiscard]] std::int32_t strongest(std::int32_t newest) const;
    [[nodiscard]] std::int32_t held(std::int32_t candidate) const;

    Queue<std::int32_t> rawRSSI_;
    Queue<std::int32_t> maxRSSI_;
    Queue<std::int32_t> outputRSSI_;
};

}  // namespace nearcast
