// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"
#include "lab/Thresholds.h"

#include <nearcast/QXNearcastManager.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// What is advised for a device.
struct DeviceAdvice {
    std::string portName;
    std::optional<std::int32_t> present;  ///< its threshold until now, in dBm
    lab::ThresholdAdvice advice;
    std::string mistakenAt;  ///< the port name of `advice.mistakenAt`
};

/// Advises thresholds for the devices of recordings in which the user stood at one after another.
/// @param settings by which `nearest` makes the levels that a threshold is compared with
std::vector<DeviceAdvice> advise(const std::vector<JudgedRecording>& recordings, const NearestSettings& settings);

/// For people: a table, and a line for each device that has no threshold or is not told apart by it.
std::string textOf(const std::vector<DeviceAdvice>& advice);
/// One JSON object, with line end.
std::string JSONOf(const std::vector<DeviceAdvice>& advice, const NearestSettings& settings);

/// The registry with the advised thresholds in its records; those without advice stay as they are.
Settings withThresholds(const Settings& registry, const std::vector<DeviceAdvice>& advice);

}  // namespace nearcast::cli
