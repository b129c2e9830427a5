// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Samples.h"
#include "lines/Truth.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// A time that the user spent in one place, without its first seconds, in which levels still settle.
struct Stay {
    double from = 0;  ///< seconds
    double to = 0;
    std::string MACAddr;  ///< of the device there; empty: at none

    friend bool operator==(const Stay&, const Stay&) = default;
};

/// Seconds after a change of place that do not count: the user walks, and levels follow.
inline constexpr double settlingTime = 5;
/// The least that has to be left of a stay, in seconds.
inline constexpr double shortestStay = 5;

/// The stays that are long enough.
/// @param end of the recording, in seconds
std::vector<Stay> staysOf(const lines::Truth& truth, double end);

/// The level of each device while the user stood at one after another; of one recording or of several.
class Standing {
public:
    static constexpr double unheard = -std::numeric_limits<double>::infinity();
    static constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

    /// A sample, or several in a row that are the same.
    struct Sample {
        std::size_t stay;     ///< number of the stay that it belongs to
        bool laterHalf;       ///< of its stay
        std::size_t place;    ///< of the device that the user stood at; `nowhere`: at none
        std::uint64_t count;  ///< how many they are
    };

    /// A stay begins, to which the next samples belong.
    void begin(const Stay& stay);
    /// @param levels in dBm, by address; devices that are not in it are unheard
    void take(const Samples& samples, const std::map<std::string, double, std::less<>>& levels);

    [[nodiscard]] const std::vector<std::string>& devices() const noexcept { return devices_; }
    [[nodiscard]] const std::vector<Sample>& samples() const noexcept { return samples_; }
    /// The device's level at each sample, in dBm or `unheard`.
    [[nodiscard]] std::vector<double> levelsOf(std::size_t device) const;
    [[nodiscard]] std::size_t stays() const noexcept { return stays_; }

private:
    struct Heard {
        std::size_t sample;
        double level;
    };

    std::size_t placeOf(std::string_view MACAddr);
    void add(std::uint64_t count, bool laterHalf, const std::map<std::string, double, std::less<>>& levels);

    std::vector<std::string> devices_;
    std::map<std::string, std::size_t, std::less<>> places_;
    std::vector<Sample> samples_;
    std::vector<std::vector<Heard>> heard_;  ///< by device, for of many devices few are heard at a time
    std::size_t stays_ = 0;
    Stay stay_;
};

/// The "Threshold RSSI" that a device should have, and how well it works.
///
/// The threshold makes the smallest error on all of the stays: the mean of the share of the time at the device that its
/// level is below the threshold, and the share of the time elsewhere that it is not. Of neighbours that make it, it is
/// the one in the middle, so that it is as far from the levels on either side as it can be. The shares that are told
/// are those for time that had no part in choosing: where the user stood at the device twice or more, each stay is
/// judged by a threshold that the other stays gave; else each half of the stays by one that the other half gave.
struct ThresholdAdvice {
    std::string MACAddr;
    std::optional<std::int32_t> threshold;  ///< in dBm; nothing: a side is missing, or it was never heard
    std::size_t stays = 0;                  ///< at the device
    bool elsewhere = false;                 ///< whether the user also stood in other places
    bool byHalves = false;                  ///< how the shares were found
    double missed = 0;                      ///< share of the time at the device that it would be outside its area
    double intruding = 0;                   ///< share of the time elsewhere that it would be inside its area
    std::string mistakenAt;                 ///< the device at which it intrudes most; empty: at none
    double intrudingThere = 0;              ///< share of the time at that device

    [[nodiscard]] double error() const { return (missed + intruding) / 2; }
    /// Between this device and the one at which it intrudes most: half is what guessing gives.
    [[nodiscard]] double errorThere() const { return (missed + intrudingThere) / 2; }
    /// Whether the threshold does not tell it from that device.
    [[nodiscard]] bool inseparable() const { return threshold && errorThere() >= mostError; }

    static constexpr double mostError = 0.2;
};

/// Advice for every device, in their order.
std::vector<ThresholdAdvice> adviseThresholds(const Standing& standing);

}  // namespace nearcast::lab
