// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "doctor/Checks.h"
#include "doctor/Hearing.h"

#include <optional>
#include <vector>

namespace nearcast::cli {

/// Seconds after which the manager forgets a dongle; a dongle that was not heard for so long gets a remark.
inline constexpr double silence = 5;

/// Whether the radio can hear and has heard.
bool scanWorks(const Hearing& hearing, const RadioHealth& health);

/// That the scan was not tried, because there is nothing to scan with.
Finding missingFinding(const RadioHealth& health);
/// What a trial scan says of the radio and the dongles.
std::vector<Finding> scanFindings(const Hearing& hearing, const RadioHealth& health);
/// What the controller, or whoever asks it, does with repeated reports; nothing where it cannot be told.
std::optional<Finding> duplicatesFinding(const Hearing& hearing);

}  // namespace nearcast::cli
