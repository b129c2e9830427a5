// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <array>
#include <cstddef>
#include <optional>

namespace nearcast::nearest {

/// The strongest three of the devices beside the strongest one. More would make it a question of how large a place is.
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

/// What is learned of a place from what is heard there: how strong a close device is, and how far it stands out from
/// the others. By that a lead counts more or less. A plain value.
class Surroundings {
public:
    explicit Surroundings(const NearestSettings& settings) : close_(settings.closeSignal) {}

    /// @param elapsed   seconds for which it was so
    /// @param strongest the strongest device's level in dBm
    /// @param next      the mean of the next ones' in dBm
    void learn(double elapsed, double strongest, std::optional<double> next, const NearestSettings& settings);

    /// How much a lead counts by its size: 1, and up to 4 where the strongest device stands out more than usual. Leads
    /// are larger there while readings vary as they do everywhere, so less time is enough.
    [[nodiscard]] double clarity(const NearestSettings& settings) const;
    /// How much a lead counts by its leader: 1 with the signal of a close device, twice as much for each 3 dB more; and
    /// for so many times 3 dB as leads are clear.
    /// @param level the leader's, in dBm
    [[nodiscard]] double weight(double level, const NearestSettings& settings) const;

private:
    double close_;           ///< in dBm
    double contrast_ = 0;    ///< of the strongest device over the next ones, in dB
    double learnedFor_ = 5;  ///< seconds that stand behind both; at first a few, so that they soon follow what is heard
};

}  // namespace nearcast::nearest
