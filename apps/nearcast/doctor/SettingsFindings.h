// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doctor/Checks.h"

#include <string>
#include <vector>

namespace nearcast::cli {

/// What is odd about a settings file: a remark each, for the scan works, and some device is not told of as it is meant.
/// @throws as `checkedSettings`
std::vector<Finding> settingsFindings(const std::string& path);

}  // namespace nearcast::cli
