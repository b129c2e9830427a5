// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <nlohmann/json.hpp>
#include <optional>

namespace nearcast::cli {

using JSON = nlohmann::ordered_json;

/// A figure with four decimal places; null where there is none.
JSON roundedJSON(std::optional<double> value);
/// A share from 0 to 1 in percent.
JSON percentJSON(std::optional<double> share);
/// Settings by their names.
JSON settingsJSON(const NearestSettings& settings);

}  // namespace nearcast::cli
