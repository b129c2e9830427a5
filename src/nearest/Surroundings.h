// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <array>
#include <cstddef>
#include <optional>

namespace nearcast::nearest {

/// The strongest three devices after the strongest one. More would make the size of the place count.
class NextLevels {
public:
    /// @param level in dBm
    void add(double level);
    /// In dBm; nothing where there are no others.
    [[nodiscard]] std::optional<double> mean() const;

private:
    std::array<double, 3> highest_{};
    std::size_t known_ = 0;
};

/// What is learned about a place: how strong a close device is, and how far it stands out from the others. A lead
/// counts more or less accordingly. A plain value.
class Surroundings {
public:
    explicit Surroundings(const NearestSettings& settings) : close_(settings.closeSignal) {}

    /// @param elapsed   seconds that the levels lasted
    /// @param strongest the strongest device's level in dBm
    /// @param next      the mean of the next ones' in dBm
    void learn(double elapsed, double strongest, std::optional<double> next, const NearestSettings& settings);

    /// The factor for the size of a lead: 1, and up to 4 where the strongest device stands out more than usual. Leads
    /// are larger there, while readings vary as much as anywhere, so less time is enough.
    [[nodiscard]] double clarity(const NearestSettings& settings) const;
    /// The factor for the leader's signal: 1 at the level of a close device, doubled for each 3 dB above it, or
    /// for each 3 dB times the clarity where that is more.
    /// @param level the leader's, in dBm
    [[nodiscard]] double weight(double level, const NearestSettings& settings) const;

private:
    double close_;           ///< in dBm
    double contrast_ = 0;    ///< of the strongest device over the next ones, in dB
    double learnedFor_ = 5;  ///< seconds that stand behind both; at first a few, so that they soon follow what is heard
};

}  // namespace nearcast::nearest
