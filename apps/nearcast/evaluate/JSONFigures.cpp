// SPDX-License-Identifier: Apache-2.0
#include "evaluate/JSONFigures.h"

#include <cmath>
#include <string>

namespace nearcast::cli {

JSON roundedJSON(std::optional<double> value) {
    constexpr double places = 1e4;
    return value ? JSON(std::round(*value * places) / places) : JSON();
}

JSON percentJSON(std::optional<double> share) {
    constexpr double hundred = 100;
    return share ? roundedJSON(*share * hundred) : JSON();
}

JSON settingsJSON(const NearestSettings& settings) {
    JSON result = JSON::object();
    for (const NearestSetting& setting : nearestSettings()) {
        result[std::string(setting.name)] = settings.*setting.value;
    }
    return result;
}

}  // namespace nearcast::cli
