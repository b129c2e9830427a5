// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Standing.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::lab {

/// What "Threshold RSSI" a device should have, and what is to be expected of it.
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
