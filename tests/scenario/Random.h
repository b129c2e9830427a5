// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace nearcast::scenario {

/// The same numbers from the same seed on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}

    /// 0 to `count` - 1.
    std::uint64_t below(std::uint64_t count) { return engine_() % count; }
    std::int64_t between(std::int64_t first, std::int64_t last) {
        return first + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(last - first + 1)));
    }
    /// True once in `count` times.
    bool oneIn(std::uint64_t count) { return below(count) == 0; }
    template <class List>
    const auto& pick(const List& list) {
        return list[below(std::size(list))];
    }

private:
    std::mt19937_64 engine_;
};

}  // namespace nearcast::scenario
