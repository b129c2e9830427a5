// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/SlidingMaximum.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace nearcast {

/// The smoothing of one dongle's signal. A plain value; not for several threads at once.
///
/// A reading goes into a sliding window, and the strongest reading of a full window is the candidate. Fading makes
/// readings weaker far more often than stronger, so the maximum follows the true level. A candidate within 2 dB of the
/// last output is followed at once. A larger change is followed only when the candidates of the whole history had left
/// the outputs behind, so that one outlier does not move the output.
///
/// The history is a window of outputs and their candidates. All that is asked of it is how full it is, what came out
/// last, and whether any step in it followed, so that is all that is kept: a reading costs the same, and the history
/// takes the same memory, whatever the window.
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
        std::uint64_t readings = 0;          ///< in the window, this one included
        std::uint64_t outputs = 0;           ///< in the history, this one not included
    };

    /// @param capacity of the windows, for their whole life
    /// @param first    the reading that made the dongle known, in dBm
    Smoothing(std::uint64_t capacity, std::int32_t first);

    /// Takes a reading in.
    /// @param RSSI           in dBm
    /// @param samplingNumber what counts as a full window now; it may differ from the capacity
    Result add(std::int32_t RSSI, std::uint64_t samplingNumber);

    /// The newest output, or null while there is none.
    [[nodiscard]] const std::int32_t* lastOutput() const noexcept { return outputs_ == 0 ? nullptr : &lastOutput_; }

private:
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    [[nodiscard]] bool historyFollowed() const noexcept;
    [[nodiscard]] std::int32_t held(std::int32_t candidate) const noexcept;
    void remember(std::int32_t candidate, std::int32_t output) noexcept;

    std::uint64_t outputs_ = 0;                 ///< in the history
    std::uint64_t stepsSinceFollowed_ = never;  ///< 0: the newest candidate was within 2 dB of the output before it
    SlidingMaximum readings_;
    std::int32_t lastOutput_ = 0;
};

}  // namespace nearcast
