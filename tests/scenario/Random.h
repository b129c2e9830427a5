// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <random>
#include <span>

namespace nearcast::scenario {

/// Numbers by chance, the same from the same seed on every machine; or first those that octets spell.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine_(seed) {}
    /// @param octets live longer
    explicit Random(std::span<const std::uint8_t> octets) : octets_(octets) {}

    /// 0 to `count` - 1.
    std::uint64_t below(std::uint64_t count) { return (octets_.empty() ? engine_() : spelt(count - 1)) % count; }
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
    /// The next octets, as many as the largest number needs.
    std::uint64_t spelt(std::uint64_t largest) {
        std::uint64_t number = 0;
        for (; largest > 0 && !octets_.empty(); largest >>= 8) {
            number = number << 8 | octets_.front();
            octets_ = octets_.subspan(1);
        }
        return number;
    }

    std::mt19937_64 engine_;
    std::span<const std::uint8_t> octets_;
};

}  // namespace nearcast::scenario
