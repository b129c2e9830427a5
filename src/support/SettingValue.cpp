// SPDX-License-Identifier: Apache-2.0
#include <nearcast/SettingRecord.h>

#include "support/Number.h"

namespace nearcast {

std::int32_t SettingValue::intValue() const noexcept {
    if (const auto* value = as<bool>()) return *value ? 1 : 0;
    if (const auto* value = as<std::int64_t>()) return clampedToInt32(*value);
    if (as<std::uint64_t>() != nullptr) return INT32_MAX;  // held only above the signed range
    if (const auto* value = as<double>()) return int32FromNumber(*value);
    if (const auto* value = as<std::string>()) return int32FromText(*value);
    return 0;
}

}  // namespace nearcast
