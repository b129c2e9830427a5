// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <string_view>
#include <utility>

namespace nearcast::simulator {

/// A stream of random numbers that is the same with every compiler and library, which the distributions of `<random>`
/// are not. The generator is SplitMix64 (Steele, Lea, Flood: Fast Splittable Pseudorandom Number Generators, 2014):
/// a Weyl sequence, each term mixed. Not for several threads at once.
class Random {
public:
    /// @param seed the run's
    /// @param name of the stream: streams of different names have nothing to do with each other
    Random(std::uint64_t seed, std::string_view name) : state_(mix(seed + step)) {
        for (const char letter : name) state_ = mix(state_ ^ static_cast<unsigned char>(letter)) + step;
    }

    std::uint64_t next() { return mix(state_ += step); }

    /// From 0 to below 1.
    double uniform() { return static_cast<double>(next() >> 11) * 0x1p-53; }

    /// A whole number from 0 to `last`, both included.
    std::uint64_t upTo(std::uint64_t last) {
        return static_cast<std::uint64_t>(uniform() * (static_cast<double>(last) + 1));
    }

    /// Two independent normal deviates of mean 0 and standard deviation 1 (Box and Muller).
    std::pair<double, double> normals() {
        const double radius = std::sqrt(-2 * std::log(1 - uniform()));  // 1 - u is never 0
        const double angle = 2 * std::numbers::pi * uniform();
        return {radius * std::cos(angle), radius * std::sin(angle)};
    }

private:
    static constexpr std::uint64_t step = 0x9E3779B97F4A7C15;

    static constexpr std::uint64_t mix(std::uint64_t value) {
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
        return value ^ (value >> 31);
    }

    std::uint64_t state_;
};

}  // namespace nearcast::simulator
