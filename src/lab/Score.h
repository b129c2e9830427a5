// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Rule.h"
#include "lines/Truth.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace nearcast::lab {

/// How good answers were. Scores of several recordings are added, so that a long recording weighs more than a short
/// one.
struct Score {
    std::uint64_t samples = 0;   ///< answers at times for which the truth is known
    std::uint64_t right = 0;     ///< those that were the truth; none is right where the user stands next to none
    std::uint64_t answered = 0;  ///< answers that named a dongle
    std::uint64_t rightAnswered = 0;
    /// Answers that named another dongle than the answer before, and not the true one. An answer that names none is no
    /// switch; naming a wrong dongle after none is one.
    std::uint64_t wrongSwitches = 0;
    std::uint64_t changes = 0;       ///< times that the truth changed, its begin not counted
    std::uint64_t neverReached = 0;  ///< changes after which no answer was right before the next change or the end
    /// For each change that was reached: seconds from the change to the first right answer.
    std::vector<double> followed;

    Score& operator+=(const Score& other);

    [[nodiscard]] double minutes() const;
    /// Shares from 0 to 1; nothing where nothing was counted.
    [[nodiscard]] std::optional<double> rightOfAll() const;
    [[nodiscard]] std::optional<double> rightOfAnswered() const;
    [[nodiscard]] std::optional<double> wrongSwitchesPerMinute() const;
    /// Quantile of `followed`, interpolated. Nothing if no change was reached.
    /// @param part from 0 to 1; 0.5 is the median
    [[nodiscard]] std::optional<double> timeToFollow(double part) const;
};

/// Compares answers with the truth. Those before the first mark do not count.
Score scoreOf(const Answers& answers, const lines::Truth& truth);

}  // namespace nearcast::lab
