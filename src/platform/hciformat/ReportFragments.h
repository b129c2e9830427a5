// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace nearcast {

/// Joins advertisements that a controller hands over in pieces. Its memory is bounded: of too many unfinished
/// advertisements the oldest is dropped, and one that grows beyond what can be advertised is cut there.
class ReportFragments {
public:
    using Key = std::array<std::uint8_t, 9>;  ///< whose advertisement it is

    /// The longest advertising data (Core Specification, Volume 6, Part B, 2.3.4.9).
    static constexpr std::size_t longestData = 1650;
    static constexpr std::size_t mostUnfinished = 64;

    /// Keeps a piece until the last one comes.
    void add(const Key& key, std::span<const std::uint8_t> piece);
    /// All pieces kept for `key` and the last one, which is not kept; nothing when none were kept.
    std::optional<std::vector<std::uint8_t>> finish(const Key& key, std::span<const std::uint8_t> last);

private:
    struct Unfinished {
        Key key;
        std::vector<std::uint8_t> data;
    };
    std::deque<Unfinished>::iterator find(const Key& key);

    std::deque<Unfinished> unfinished_;  // oldest first
};

}  // namespace nearcast
