// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"
#include "lab/Thresholds.h"

#include <nearcast/QXNearcastManager.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// The threshold that is advised for a device.
struct DeviceAdvice {
    std::string portName;
    std::optional<std::int32_t> present;  ///< its current threshold in dBm
    lab::ThresholdAdvice advice;
    std::string mistakenAt;  ///< the port name of `advice.mistakenAt`
};

/// Advises thresholds from recordings in which the user stood at one device after another.
/// @param settings with which `nearest` computes the levels that thresholds are compared with
std::vector<DeviceAdvice> advise(const std::vector<JudgedRecording>& recordings, const NearestSettings& settings);

/// For people: a table, and a line for each device that got no threshold or that its threshold does not separate.
std::string textOf(const std::vector<DeviceAdvice>& advice);
/// One JSON object and a line end.
std::string JSONOf(const std::vector<DeviceAdvice>& advice, const NearestSettings& settings);

/// The registry with the advised thresholds in its records; records without advice stay as they are.
Settings withThresholds(const Settings& registry, const std::vector<DeviceAdvice>& advice);

}  // namespace nearcast::cli
